#include "app/ResultTable.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <fstream>
#include <limits>
#include <ostream>
#include <vector>

#include "io/Channels.hpp"
#include "io/CheckedAccess.hpp"
#include "io/Format.hpp"
#include "io/Progress.hpp"
#include "io/StageReport.hpp"
#include "thread/ParallelFor.hpp"

namespace orvanta {

namespace io = velmo::io;
using velmo::u64;

namespace {

constexpr u64 kNumColumns = 7;
constexpr u64 kRowsPerChunk = 4096;
constexpr u64 kChunksPerWave = 32;

/// Room for one number: sign, 18 digits, point, exponent of three digits, separator.
constexpr u64 kNumberWidth = 32;

/// Appends `value` as the format {:> .17E} prints it, a blank in the sign place of a number that is
/// not negative, at a tenth of the format's time.
char* appendNumber(char* out, double value) {
  if (!std::signbit(value)) *out++ = ' ';
  char* const end =
      std::to_chars(out, out + kNumberWidth, value, std::chars_format::scientific, 17).ptr;
  for (char* c = out; c != end; ++c)
    if (*c >= 'a' && *c <= 'z') *c = static_cast<char>(*c - 'a' + 'A');
  return end;
}

/// The rows [first, end) as text.
std::string formatRows(u64 first, u64 end, const double* coordinates, const double* potential,
                       const double* field) {
  std::string text;
  text.resize((end - first) * kNumColumns * kNumberWidth);
  char* out = text.data();
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
  text.resize(static_cast<std::size_t>(out - text.data()));
  return text;
}

struct Chunk {
  u64 first;
  u64 end;
  std::string text;
};

/// Smallest and largest value; no value leaves the start values.
struct Range {
  double min = std::numeric_limits<double>::max();
  double max = std::numeric_limits<double>::lowest();

  void add(double value) {
    if (value < min) min = value;
    if (value > max) max = value;
  }
  [[nodiscard]] std::string text() const {
    return io::format("[ {:<+14.8E} : {:<+14.8E} ]\n", min, max);
  }
};

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
  // Rows are formatted by all threads and written in order; nothing to do for a file that failed.
  for (u64 begin = 0; begin < numPoints && file.good(); begin += kChunksPerWave * kRowsPerChunk) {
    std::vector<Chunk> wave;
    const u64 waveEnd = std::min(numPoints, begin + kChunksPerWave * kRowsPerChunk);
    for (u64 first = begin; first < waveEnd; first += kRowsPerChunk)
      wave.push_back({first, std::min(waveEnd, first + kRowsPerChunk), {}});
    velmo::thread::parallelFor(wave.begin(), wave.end(), [&](Chunk& chunk) {
      chunk.text = formatRows(chunk.first, chunk.end, points.coordinates.data(), potential.data(),
                              field.data());
    });
    for (const Chunk& chunk : wave) {
      file.write(chunk.text.data(), static_cast<std::streamsize>(chunk.text.size()));
      io::addWorkDone(static_cast<double>(chunk.end - chunk.first));
    }
  }
  return path;
}

void reportExtrema(std::span<const double> potential, std::span<const double> field) {
  std::array<Range, 4> ranges;
  double magnitude = 0.0;
  for (u64 i = 0; i < potential.size(); ++i) {
    ranges[0].add(potential[i]);
    for (u64 c = 0; c < 3; ++c) ranges[1 + c].add(field[3 * i + c]);
    const double length = std::hypot(field[3 * i], field[3 * i + 1], field[3 * i + 2]);
    if (length > magnitude) magnitude = length;
  }
  io::out << io::kSingleRule << "# Field extrema\n" << io::kSingleRule;
  io::out << "  Range of potential:   " << ranges[0].text();
  io::out << "  Range of E-field(X):  " << ranges[1].text();
  io::out << "  Range of E-field(Y):  " << ranges[2].text();
  io::out << "  Range of E-field(Z):  " << ranges[3].text();
  io::out << "  Max eField magnitude: " << io::format("   {:<14.8E}\n", magnitude);
}

}  // namespace orvanta
