#include "grid/UsualPoints.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <istream>
#include <memory>
#include <string_view>

#include "grid/LineScanner.hpp"
#include "thread/ParallelFor.hpp"

namespace velmo::grid {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 21U;
/// A few hundred points, parsed in about 100 us.
constexpr std::size_t kPiece = std::size_t{1} << 15U;
/// A longer line isn't a usual one.
constexpr std::size_t kMaxLine = 4096;
/// "0 0 0" with its line end.
constexpr std::size_t kLeastPerPoint = 6;

/// Whole lines with the points that were found in them.
struct Piece {
  std::string_view text;
  std::vector<double> coordinates;
  std::size_t taken = 0;  ///< characters, in whole lines
};

bool takePoint(const char* first, const char* last, std::array<double, 3>& point) {
  for (double& x : point) {
    while (first != last && isBlank(*first)) ++first;
    first = takeUsualNumber(first, last, x);
    if (first == nullptr) return false;
  }
  return true;
}

/// Reads at most `numPoints` points, up to the first line that isn't a usual one.
void parse(Piece& piece, u64 numPoints) {
  piece.coordinates.clear();
  const char* line = piece.text.data();
  const char* const last = line + piece.text.size();
  std::array<double, 3> point{};
  while (line != last && piece.coordinates.size() / 3 < numPoints) {
    const auto* const end =
        static_cast<const char*>(std::memchr(line, '\n', static_cast<std::size_t>(last - line)));
    if (!beginsComment(*line)) {
      if (static_cast<std::size_t>(end - line) > kMaxLine || !takePoint(line, end, point)) break;
      piece.coordinates.insert(piece.coordinates.end(), point.begin(), point.end());
    }
    line = end + 1;
  }
  piece.taken = static_cast<std::size_t>(line - piece.text.data());
}

/// Cuts whole lines into pieces, the last ones of which may be left over from a longer text.
/// @return number of pieces
u64 cut(std::string_view text, std::vector<Piece>& pieces) {
  u64 numPieces = 0;
  while (!text.empty()) {
    const std::size_t size = text.size() <= kPiece ? text.size() : text.find('\n', kPiece - 1) + 1;
    if (numPieces == pieces.size()) pieces.emplace_back();
    pieces[numPieces++].text = text.substr(0, size);
    text.remove_prefix(size);
  }
  return numPieces;
}

/// The next block up to its last line end; empty if reading fails, which the next reader reports.
std::string_view readBlock(std::streambuf& file, char* block) {
  std::streamsize size = 0;
  try {
    size = file.sgetn(block, static_cast<std::streamsize>(kBlock));
  } catch (const std::ios_base::failure&) {
    return {};
  }
  const std::string_view text(block, static_cast<std::size_t>(std::max<std::streamsize>(size, 0)));
  return text.substr(0, text.rfind('\n') + 1);
}

void seek(std::istream& stream, std::streamoff position) {
  if (stream.rdbuf()->pubseekpos(position, std::ios_base::in) != std::streampos(position))
    stream.setstate(std::ios_base::failbit);
}

}  // namespace

void takeUsualPoints(std::istream& stream, u64 numPoints, std::vector<double>& coordinates) {
  if (!stream.good() || numPoints == 0) return;
  std::streambuf& file = *stream.rdbuf();
  std::streamoff position = file.pubseekoff(0, std::ios_base::cur, std::ios_base::in);
  if (position < 0) return;
  const std::streamoff end = file.pubseekoff(0, std::ios_base::end, std::ios_base::in);
  seek(stream, position);
  if (end <= position) return;
  const auto mostPoints = static_cast<u64>(end - position) / kLeastPerPoint + 1;
  coordinates.reserve(coordinates.size() + 3 * std::min(numPoints, mostPoints));

  const auto block = std::make_unique_for_overwrite<char[]>(kBlock);
  std::vector<Piece> pieces;
  u64 numLeft = numPoints;
  for (bool isUsual = true; isUsual && numLeft > 0;) {
    const u64 numPieces = cut(readBlock(file, block.get()), pieces);
    thread::forPieces(numPieces, 1, [&](u64 i, u64 /*end*/) { parse(pieces[i], kNone); });
    isUsual = numPieces > 0;
    for (u64 i = 0; i < numPieces && isUsual && numLeft > 0; ++i) {
      Piece& piece = pieces[i];
      if (piece.coordinates.size() / 3 > numLeft) parse(piece, numLeft);
      coordinates.insert(coordinates.end(), piece.coordinates.begin(), piece.coordinates.end());
      numLeft -= piece.coordinates.size() / 3;
      position += static_cast<std::streamoff>(piece.taken);
      isUsual = piece.taken == piece.text.size();
    }
    // After the block's last line the next one has begun.
    seek(stream, position);
  }
}

}  // namespace velmo::grid
