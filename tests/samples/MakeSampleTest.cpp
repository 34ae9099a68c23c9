#include "samples/MakeSample.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "grid/PointReaders.hpp"
#include "h5/SolutionReader.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"
#include "support/TemporaryFolder.hpp"

namespace velmo::samples {
namespace {

SampleRequest parse(std::vector<const char*> words) {
  words.push_back("--out=a/b");
  return parseRequest(words);
}

TEST(Sample, ReadsBackToTheSameBitsHoweverItIsStored) {
  const test::TemporaryFolder folder;
  const std::vector<const char*> cases[] = {
      {"--body=sphere", "--elements=mixed", "--refine=2", "--geometry-order=3", "--gzip"},
      {"--body=box", "--refine", "2", "--geometry-order=2", "--density-order=1", "--renumber",
       "--pieces=5", "--shuffle", "--integers=mixed", "--strings=variable"},
      {"--body=plate", "--elements=quads", "--refine=5", "--geometry-order=2", "--quad8",
       "--density-order=2", "--density=linear", "--pieces=2", "--integers=32", "--gzip"},
      {"--body=disc-pair", "--elements=mixed", "--refine=2", "--density-order=3", "--pieces=24",
       "--shuffle", "--rmin=1e-9", "--rmax=1e9"}};
  for (const auto& words : cases) {
    SCOPED_TRACE(words.front());
    SampleRequest request = parse(words);
    request.out = folder.path() / "s";
    const Sample sample = makeSample(request);
    (void)writeSample(request, sample);

    const h5::VtkHdfSolution read = h5::readSolution(0, request.file(".vtkhdf"));
    const grid::GridData grid = gridData(sample.mesh);
    EXPECT_EQ(read.feOrder, static_cast<std::int64_t>(request.settings.femOrder));
    EXPECT_EQ(read.charges, sample.density.charges);
    EXPECT_EQ(read.grid.coordinates, grid.coordinates);
    EXPECT_EQ(read.grid.elementTypes, grid.elementTypes);
    EXPECT_EQ(read.grid.offsets, grid.offsets);
    EXPECT_EQ(read.grid.connectivity, grid.connectivity);
    std::ifstream stream(request.file(".xyz"));
    Points points;
    grid::readXyz(stream, points);
    EXPECT_EQ(points, sample.points);
  }
}

TEST(SampleRequest, IsRefusedInClearWords) {
  const struct {
    std::vector<const char*> words;
    const char* refusal;
  } cases[] = {
      {{"--colour=red"}, "Unknown option '--colour'"},
      {{"sphere"}, "Expected an option, got 'sphere'"},
      {{"--gzip=yes"}, "'--gzip' takes no value"},
      {{"--count=3x"}, "Bad value '3x' of '--count', expected N"},
      {{"--elements=tetra"}, "Bad value 'tetra' of '--elements', expected triangles|quads|mixed"},
      {{"--centre=1,2,3,4"}, "Bad value '1,2,3,4' of '--centre', expected X,Y,Z"},
      {{"--body=box", "--density=exact"}, "No closed form is known for a box or a plate"},
      {{"--density=linear", "--charge=1"},
       "A density without total charge cannot be scaled to one"},
  };
  for (const auto& c : cases)
    test::expectThrow<utility::RuntimeError>([&] { (void)makeSample(parse(c.words)); }, c.refusal);
}

}  // namespace
}  // namespace velmo::samples
