#include "app/ResultTable.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <fstream>
#include <limits>
#include <memory>
#include <mutex>
#include <ostream>
#include <utility>
#include <vector>

#include "app/NumberText.hpp"
#include "io/Channels.hpp"
#include "io/CheckedAccess.hpp"
#include "io/Format.hpp"
#include "io/Progress.hpp"
#include "io/StageReport.hpp"
#include "io/Types.hpp"
#include "thread/ParallelFor.hpp"

namespace orvanta {

namespace io = velmo::io;
using velmo::kNone;
using velmo::u64;

namespace {

constexpr u64 kNumColumns = 7;
constexpr u64 kRowsPerPiece = 1024;
constexpr u64 kPointsPerPiece = 4096;

/// Writes the rows [first, end) as text to `out`; returns the end of the text.
char* formatRows(char* out, u64 first, u64 end, const double* coordinates, const double* potential,
                 const double* field) {
  for (u64 i = first; i < end; ++i) {
    const std::array<double, kNumColumns> row{
        coordinates[3 * i], coordinates[3 * i + 1], coordinates[3 * i + 2], potential[i],
        field[3 * i],       field[3 * i + 1],       field[3 * i + 2]};
    for (const double value : row) {
      out = appendNumber(out, value);
      *out++ = ',';
    }
    out[-1] = '\n';
  }
  return out;
}

/// Writes pieces of text in order while others are being made. Each piece has a slot in a ring. A
/// thread that has finished a piece writes it and the following pieces that are ready, unless
/// another thread is already writing and will get to it.
///
/// A thread waits for a slot only if an earlier piece, which another thread has begun, isn't
/// written yet. Pieces are begun in order, so threads never wait for each other in a circle.
class OrderedWriter {
 public:
  OrderedWriter(std::ostream& out, u64 numSlots, u64 slotSize)
      : out_(out),
        slotSize_(slotSize),
        text_(std::make_unique_for_overwrite<char[]>(numSlots * slotSize)),
        sizes_(numSlots, kNone) {}

  /// Room for the text of a piece, once the piece that had its slot is written.
  [[nodiscard]] char* slotOf(u64 piece) {
    std::unique_lock lock(mutex_);
    written_.wait(lock, [&] { return piece < numWritten_ + sizes_.size(); });
    return slot_(piece);
  }

  /// If the stream has failed, no text is needed, but each piece must be put nevertheless.
  [[nodiscard]] bool failed() const noexcept { return failed_; }

  /// Passes on a piece whose text is in its slot.
  void put(u64 piece, u64 size) {
    std::unique_lock lock(mutex_);
    sizes_[piece % sizes_.size()] = size;
    if (isWriting_) return;
    isWriting_ = true;
    while (true) {
      u64& ready = sizes_[numWritten_ % sizes_.size()];
      if (ready == kNone) break;
      const char* const text = slot_(numWritten_);
      const u64 length = std::exchange(ready, kNone);
      lock.unlock();
      out_.write(text, static_cast<std::streamsize>(length));
      failed_ = !out_.good();
      lock.lock();
      ++numWritten_;
      written_.notify_all();
    }
    isWriting_ = false;
  }

 private:
  [[nodiscard]] char* slot_(u64 piece) { return &text_[piece % sizes_.size() * slotSize_]; }

  std::ostream& out_;
  const u64 slotSize_;
  std::unique_ptr<char[]> text_;
  std::atomic<bool> failed_ = false;
  std::mutex mutex_;        ///< protects all members below
  std::vector<u64> sizes_;  ///< of the text in each slot; kNone while it is not ready
  u64 numWritten_ = 0;
  bool isWriting_ = false;
  std::condition_variable written_;
};

/// Smallest and largest value; without values the initial ones remain.
struct Range {
  double min = std::numeric_limits<double>::max();
  double max = std::numeric_limits<double>::lowest();

  void add(double value) {
    if (value < min) min = value;
    if (value > max) max = value;
  }
  void add(const Range& range) {
    if (range.min < min) min = range.min;
    if (range.max > max) max = range.max;
  }
  [[nodiscard]] std::string text() const {
    return io::format("[ {:<+14.8E} : {:<+14.8E} ]\n", min, max);
  }
};

/// Ranges of the potential and of the components of the field, and its greatest magnitude.
struct Extrema {
  std::array<Range, 4> ranges;
  double magnitude = 0.0;

  void add(const Extrema& other) {
    for (u64 i = 0; i < ranges.size(); ++i) ranges[i].add(other.ranges[i]);
    if (other.magnitude > magnitude) magnitude = other.magnitude;
  }
};

Extrema extremaOf(std::span<const double> potential, std::span<const double> field) {
  Extrema extrema;
  for (u64 i = 0; i < potential.size(); ++i) {
    extrema.ranges[0].add(potential[i]);
    for (u64 c = 0; c < 3; ++c) extrema.ranges[1 + c].add(field[3 * i + c]);
    const double length = std::hypot(field[3 * i], field[3 * i + 1], field[3 * i + 2]);
    if (length > extrema.magnitude) extrema.magnitude = length;
  }
  return extrema;
}

}  // namespace

std::filesystem::path resultPathOf(const std::string& basename) { return basename + ".csv"; }

std::filesystem::path writeResults(const std::string& basename, const velmo::grid::GridData& points,
                                   std::span<const double> potential,
                                   std::span<const double> field) {
  std::filesystem::path path = resultPathOf(basename);
  std::ofstream file(path, std::ios_base::out);
  file << "X,Y,Z,Potential,EFieldX,EFieldY,EFieldZ\n";
  const u64 numPoints = points.numNodes;
  if (numPoints > 0) {
    (void)velmo::utility::checkedAt(points.coordinates, 3 * numPoints - 1);
    (void)velmo::utility::checkedAt(potential, numPoints - 1);
    (void)velmo::utility::checkedAt(field, 3 * numPoints - 1);
  }
  const io::Progress progress("Writing the table", static_cast<double>(numPoints));
  const u64 numPieces = (numPoints + kRowsPerPiece - 1) / kRowsPerPiece;
  OrderedWriter writer(file, std::min(numPieces, 2 * velmo::thread::numThreads()),
                       kRowsPerPiece * kNumColumns * kNumberWidth);
  velmo::thread::forPieces(numPoints, kRowsPerPiece, [&](u64 first, u64 end) {
    const u64 piece = first / kRowsPerPiece;
    char* const text = writer.slotOf(piece);
    u64 size = 0;
    if (!writer.failed())
      size = static_cast<u64>(
          formatRows(text, first, end, points.coordinates.data(), potential.data(), field.data()) -
          text);
    writer.put(piece, size);
    io::addWorkDone(static_cast<double>(end - first));
  });
  return path;
}

void reportExtrema(std::span<const double> potential, std::span<const double> field) {
  Extrema extrema;
  std::vector<Extrema> parts((potential.size() + kPointsPerPiece - 1) / kPointsPerPiece);
  velmo::thread::forPieces(potential.size(), kPointsPerPiece, [&](u64 first, u64 end) {
    parts[first / kPointsPerPiece] = extremaOf(potential.subspan(first, end - first),
                                               field.subspan(3 * first, 3 * (end - first)));
  });
  // In order, because of zeros with different signs the first one counts.
  for (const Extrema& part : parts) extrema.add(part);
  io::out << io::kSingleRule << "# Field extrema\n" << io::kSingleRule;
  io::out << "  Range of potential:   " << extrema.ranges[0].text();
  io::out << "  Range of E-field(X):  " << extrema.ranges[1].text();
  io::out << "  Range of E-field(Y):  " << extrema.ranges[2].text();
  io::out << "  Range of E-field(Z):  " << extrema.ranges[3].text();
  io::out << "  Max eField magnitude: " << io::format("   {:<14.8E}\n", extrema.magnitude);
}

}  // namespace orvanta
