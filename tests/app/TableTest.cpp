#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <filesystem>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "app/ResultTable.hpp"
#include "app/RunInputs.hpp"
#include "grid/GridData.hpp"
#include "io/Channels.hpp"
#include "io/Format.hpp"
#include "support/RunProgram.hpp"
#include "support/TemporaryFolder.hpp"

namespace orvanta {
namespace {

using velmo::u64;
using velmo::test::readFile;
using velmo::test::TemporaryFolder;
using Limits = std::numeric_limits<double>;

const std::string head = "X,Y,Z,Potential,EFieldX,EFieldY,EFieldZ\n";

/// A table's values, seven per row.
struct Table {
  explicit Table(const std::vector<double>& values) {
    for (u64 i = 0; i + 7 <= values.size(); i += 7) {
      coordinates.insert(coordinates.end(), {values[i], values[i + 1], values[i + 2]});
      potential.push_back(values[i + 3]);
      field.insert(field.end(), {values[i + 4], values[i + 5], values[i + 6]});
    }
  }

  [[nodiscard]] std::string written(const std::string& basename) const {
    const auto points = velmo::grid::makePointCloud(coordinates, potential.size());
    const std::filesystem::path path = writeResults(basename, points, potential, field);
    EXPECT_EQ(path, basename + ".csv");
    return readFile(path);
  }

  [[nodiscard]] std::string extrema() const {
    std::ostringstream report;
    velmo::io::out.setStreams({&report});
    reportExtrema(potential, field);
    velmo::io::out.setStreams({});
    return report.str();
  }

  std::vector<double> coordinates, potential, field;
};

/// The rows by the plain format, number by number.
std::string plainRows(const std::vector<double>& values) {
  std::string text;
  for (u64 i = 0; i < values.size(); ++i)
    text += velmo::io::format("{:> .{}E}", values[i], 17) + (i % 7 == 6 ? "\n" : ",");
  return text;
}

TEST(ResultTable, AgreesWithThePlainFormatForAllKindsOfNumbers) {
  const TemporaryFolder folder;
  std::vector<double> values{Limits::infinity(),   -Limits::infinity(),     Limits::quiet_NaN(),
                             -Limits::quiet_NaN(), Limits::min(),           Limits::epsilon(),
                             Limits::lowest(),     9.9999999999999999e-100, 9.99999999999999999e99};
  std::mt19937_64 random(5);
  // Any pattern of bits; enough rows for several chunks of the writer.
  while (values.size() < 7 * 10000) values.push_back(std::bit_cast<double>(random()));
  // Around powers of ten, where rounding may add a digit.
  for (int e = -40; e < 20; ++e)
    for (double x = std::pow(10.0, e), k = 0; k < 7; ++k) values.push_back(x -= x * 0x1p-53);
  // Odd multiples of half a unit of the last digit of numbers from 10^10 to 10^15.
  for (int e = 10; e < 15; ++e)
    for (int k = 0; k < 70; ++k)
      values.push_back(std::ldexp(std::ldexp(std::pow(10.0, e), 18 - e) + 1 + 2 * k, e - 18));
  // Numbers that end in half a unit of the last digit, and whole numbers.
  for (int k = 0; k < 700; ++k) values.push_back(std::ldexp(1.0 + 2.0 * k, k % 120 - 60));

  const std::string text = Table(values).written(folder.path() / "many");

  // Compared as a whole first: a failure must not print megabytes.
  EXPECT_TRUE(text == head + plainRows(values));
}

TEST(Extrema, AreReportedToTheLetter) {
  const std::string rule = "#" + std::string(67, '-') + "\n";
  const std::string begin = rule + "# Field extrema\n" + rule;
  const std::string untouched = "[ +1.79769313E+308 : -1.79769313E+308 ]\n";
  EXPECT_EQ(Table({}).extrema(), begin + "  Range of potential:   " + untouched +
                                     "  Range of E-field(X):  " + untouched +
                                     "  Range of E-field(Y):  " + untouched +
                                     "  Range of E-field(Z):  " + untouched +
                                     "  Max eField magnitude:    0.00000000E+00\n");

  const double nan = Limits::quiet_NaN();
  const Table table({9, 9, 9, 1.5,  3.0,    -4.0, 12.0,  //
                     9, 9, 9, nan,  nan,    0.0,  -nan,  //
                     9, 9, 9, -2.0, -1e-12, 5.0,  0.0});
  EXPECT_EQ(table.extrema(), begin +
                                 "  Range of potential:   [ -2.00000000E+00 : +1.50000000E+00 ]\n"
                                 "  Range of E-field(X):  [ -1.00000000E-12 : +3.00000000E+00 ]\n"
                                 "  Range of E-field(Y):  [ -4.00000000E+00 : +5.00000000E+00 ]\n"
                                 "  Range of E-field(Z):  [ +0.00000000E+00 : +1.20000000E+01 ]\n"
                                 "  Max eField magnitude:    1.30000000E+01\n");
}

TEST(Extrema, AreThoseOfAllPiecesTogether) {
  // Long enough for several pieces, one of them without numbers; of equal zeros the first stays.
  std::vector<double> values(7 * u64{20000}, 1.0);
  for (u64 row = 4000; row < 9000; ++row) std::fill_n(&values[7 * row], 7, Limits::quiet_NaN());
  values[7 * u64{3} + 3] = -0.0;
  values[7 * u64{19999} + 3] = 0.0;
  values[7 * u64{15000} + 4] = -2.0;
  values[7 * u64{15000} + 5] = 3.0;

  const std::string text = Table(values).extrema();

  for (const char* line :
       {"potential:   [ -0.00000000E+00 : +1.00000000E+00 ]\n",
        "E-field(X):  [ -2.00000000E+00 : +1.00000000E+00 ]\n",
        "E-field(Y):  [ +1.00000000E+00 : +3.00000000E+00 ]\n",
        "E-field(Z):  [ +1.00000000E+00 : +1.00000000E+00 ]\n", "magnitude:    3.74165739E+00\n"})
    EXPECT_NE(text.find(line), std::string::npos) << line << text;
}

TEST(RunInputs, DeriveTheBaseNameOfTheResult) {
  const TemporaryFolder folder;
  const std::string points = folder.write("a.b.xyz", "0\n");
  const std::vector<std::pair<std::string, std::string>> cases{
      {"", (folder.path() / "a.b").string()},
      {"res", "res"},
      {"res.csv", "res"},
      {"dir/res.vtk", "dir/res"},
      {"res.txt", "res.txt"},
      {"res.CSV", "res.CSV"},
      // Text that YAML would read as something else than a string.
      {"~", "~"},
      {"- a: 'b' #c", "- a: 'b' #c"}};
  for (const auto& [output, base] : cases) {
    const auto inputs = readRunInputs(points, {}, output);
    ASSERT_TRUE(inputs);
    EXPECT_EQ(inputs->outputPath, base);
    EXPECT_EQ(inputs->problem.postProc.outBasename, base);
  }
}

}  // namespace
}  // namespace orvanta
