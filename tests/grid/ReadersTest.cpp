#include <gtest/gtest.h>

#include <ios>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "grid/PointReaders.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::grid {
namespace {

using test::expectThrow;

std::vector<double> xyz(const std::string& text) {
  std::istringstream stream(text);
  std::vector<double> coordinates{99};
  readXyz(stream, coordinates);
  return coordinates;
}

GridData mesh(const std::string& text) {
  std::istringstream stream(text);
  GridData grid;
  readMesh(stream, grid);
  return grid;
}

TEST(XyzReader, ReadsCountAndPointsBetweenComments) {
  for (const std::string text : {
           "2\n1 2 3\n-4 5e1 .5\n",
           "2\n1 2 3\n-4 5e1 .5",
           "# head\n\r\n\n2 points\n#\n1 2 3 fourth\n# middle\n\n-4 5e1 .5 # tail\nanything\n",
           " 2\r\n1\t2\r\n3 x\r\n   -4\n\n5e1 +.5\r\n",
           "02\n1.0+2. 3.0e0\n-4 5E+1 0.5\n2 4\n",
       })
    EXPECT_EQ(xyz(text), (std::vector<double>{1, 2, 3, -4, 50, 0.5})) << text;
  EXPECT_EQ(xyz("1.5\n1 2 3\n"), (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(xyz("0"), std::vector<double>{});
  EXPECT_EQ(xyz("#\n0 x\n1 2"), std::vector<double>{});
}

TEST(XyzReader, EndsInTheStreamsOwnFailure) {
  for (const std::string text :
       {"", "#", "x\n", "2\n1 2 3\n", "1\n1 2\n", "1\n1 2 x\n", "1\n1 2\n# 3\n", "1\n1 2,3 4\n",
        "1\n1 inf 2\n", "1\n1 nan 2\n", "1\n0x1p3 1 2\n", "1\n1 1e999 2\n", "1\n1 2 3e\n",
        "1\n1 + 2 3\n", " # no comment\n0\n", "18446744073709551615\n1 2 3\n", "-1\n1 2 3\n",
        "18446744073709551616\n1 2 3\n"})
    EXPECT_THROW((void)xyz(text), std::ios_base::failure) << text;
}

/// Gives some characters, then fails as a file does on a disk that breaks.
class BreakingText : public std::streambuf {
 public:
  explicit BreakingText(std::string text) : text_(std::move(text)) {
    setg(text_.data(), text_.data(), text_.data() + text_.size());
  }

 private:
  int_type underflow() override { throw std::ios_base::failure("broken"); }

  std::string text_;
};

TEST(XyzReader, TakesNoNumberThatAFailingReadCutsShort) {
  const std::string text = "2\n1 2 3\n-4 50 0.125\n";
  for (std::size_t size = 0; size <= text.size(); ++size) {
    BreakingText buffer(text.substr(0, size));
    std::istream stream(&buffer);
    std::vector<double> coordinates;
    if (size == text.size()) {
      readXyz(stream, coordinates);
      EXPECT_EQ(coordinates, (std::vector<double>{1, 2, 3, -4, 50, 0.125}));
    } else {
      EXPECT_THROW(readXyz(stream, coordinates), std::ios_base::failure) << size;
    }
  }
}

/// A text without positions, as that of a pipe.
class Pipe : public std::stringbuf {
 public:
  using std::stringbuf::stringbuf;

 private:
  pos_type seekoff(off_type, std::ios_base::seekdir, std::ios_base::openmode) override {
    return pos_type(off_type(-1));
  }
};

// Pipes are read line by line.
TEST(XyzReader, TakesFromFilesWhatItTakesFromPipes) {
  std::string usual;
  for (int i = 0; i < 40000; ++i)
    usual += std::to_string(i) + " -" + std::to_string(i) + ".25e-3\t+.5" +
             (i % 5 == 0 ? " # note\r\n#\n\n" : "\n") +
             (i % 9999 == 1 ? "#" + std::string(50000, 'x') + "\n" : "");
  const std::string tail = "9 9 9\n# end\n  #\n";
  int numRefused = 0;
  for (const std::string odd : {"", "1 2\n3\n", " \n", "1 2 0.5x\n", "1 inf 2\n", "1,2 3 4\n",
                                "5 6 7", "# 1\n1 2 1e999\n", "1 2 3 ", "\n# x"})
    for (const std::string count : {"1", "39999", "40000", "40001", "40002", "80001", "80002",
                                    "18446744073709551615", "6148914691236517206"}) {
      const std::string text = count + "\n" + usual + odd + usual + tail;
      std::istringstream file(text);
      Pipe buffer(text);
      std::istream pipe(&buffer);
      std::vector<double> ofFile;
      std::vector<double> ofPipe;
      XyzRest restOfFile;
      XyzRest restOfPipe;
      const auto refused = [](auto&& read) {
        try {
          read();
          return std::string();
        } catch (const std::ios_base::failure& failure) {
          return std::string(failure.what());
        }
      };

      const std::string refusal = refused([&] { restOfFile = readXyz(file, ofFile); });

      EXPECT_EQ(refusal, refused([&] { restOfPipe = readXyz(pipe, ofPipe); })) << odd << count;
      EXPECT_TRUE(ofFile == ofPipe) << odd << count;
      EXPECT_EQ(restOfFile.hasMoreLines, restOfPipe.hasMoreLines) << odd << count;
      numRefused += !refusal.empty();
    }
  EXPECT_GT(numRefused, 20);
}

const std::string kMesh =
    "# header\n  3  4 2   7  ignored\r\n\n"
    "# nodes\n10 0 0 0 more\n7 1 0 0\n#\n8 1 1\n0\n9 0 1 0.5\n\n"
    "# elements\nTria3 5 10 7 8 more\n304 6 10 7\n8 9";

TEST(MeshReader, ReadsNodesAndElementsAsTheyStand) {
  EXPECT_EQ(mesh("3 1 0 0\r\n7 1 2 3\r\n").coordinates, (std::vector<double>{1, 2, 3}));
  const GridData grid = mesh(kMesh);

  EXPECT_EQ(grid.worldDim, 3);
  EXPECT_EQ(grid.numNodes, 4);
  EXPECT_EQ(grid.numElements, 2);
  EXPECT_EQ(grid.nodeIds, (std::vector<u64>{10, 7, 8, 9}));
  EXPECT_EQ(grid.coordinates, (std::vector<double>{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0.5}));
  EXPECT_EQ(grid.elementTypes, (std::vector<u64>{203, 304}));
  EXPECT_EQ(grid.elementTags, (std::vector<u64>{5, 6}));
  EXPECT_EQ(grid.offsets, (std::vector<u64>{0, 3, 7}));
  EXPECT_EQ(grid.connectivity, (std::vector<u64>{10, 7, 8, 10, 7, 8, 9}));
  EXPECT_EQ(mesh("2 0 0 0").worldDim, 2);
}

TEST(MeshReader, WarnsOnceWhenTheHeaderPromisesMoreIncidences) {
  testing::internal::CaptureStderr();
  const GridData grid = mesh("3 0 2 12\n203 1 0 1 2\n206 1 0 1 2 3 4 5\n");

  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "(WW) Input file predicted larger size of incidence table\n");
  EXPECT_EQ(grid.connectivity.size(), 9);
  EXPECT_EQ(grid.offsets.back(), 9);
}

TEST(Readers, TakeLinesOfAMiBAndNoLongerOnes) {
  constexpr std::size_t kLimit = std::size_t{1} << 20U;
  const std::string blanks(kLimit - 5, ' ');
  EXPECT_EQ(xyz("1\n1 2 3" + blanks + "\n"), (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(xyz("1\n1 2" + blanks + " 3"), (std::vector<double>{1, 2, 3}));
  const std::string words = "A line is longer than 1 MiB; this is no list of points and no mesh";
  for (const std::string& text :
       {std::string(kLimit + 1, '\0'), "1\n1 2" + blanks + "  3", "1\n " + blanks + "1 2 3\n"})
    expectThrow<utility::RuntimeError>([&] { (void)xyz(text); }, words);
  expectThrow<utility::RuntimeError>([&] { (void)mesh(std::string(kLimit + 1, '3')); }, words);
}

TEST(MeshReader, RefusesBadHeadersAndElementsInItsOwnWords) {
  const struct {
    std::string text;
    std::string refusal;
  } cases[] = {
      {"3 4 2\n", "Expected four words here -> 3 4 2"},
      {" \n", "Expected four words here ->  "},
      {"3\t4 2 7\n", "Expected four words here -> 3\t4 2 7"},
      {"3 4 2 x\n", "Expected a number, got: x"},
      {"3 -4 2 7\n", "Expected a number, got: -4"},
      {"3 4 2. 7\n", "Expected a number, got: 2."},
      {"3 4 2 7\r7\n", "Expected a number, got: 7\r7"},
      {"3 0 1 7\nTria4 1 1 2 3\n", "Failed to identify the ET: Tria4"},
      {"3 0 1 12\nQuad12 1 1 2 3\n",
       "velmo::grid::detail_::applyToEets: must not reach this point (Quad12)"},
      {"3 0 1 2\n203 1 1 2 3\n", "Input file predicted smaller size of incidence table: 2"},
  };
  for (const auto& fault : cases)
    expectThrow<std::runtime_error>([&] { (void)mesh(fault.text); }, fault.refusal);
  expectThrow<std::out_of_range>([] { (void)mesh("3 2147483648 2 7\n"); },
                                 "stoi argument out of range");
  for (const std::string text :
       {"", "3 1 0 0\n1 0 0\n", "3 2147483647 2147483647 2147483647\n",
        "2147483647 2147483647 0 0\n1 2 3\n", "3 0 1 1\n0 x 1\n", "3 0 1 1\n0 1 x\n"})
    EXPECT_THROW((void)mesh(text), std::ios_base::failure) << text;
}

}  // namespace
}  // namespace velmo::grid
