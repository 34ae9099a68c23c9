#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <vector>

#include "grid/GridData.hpp"
#include "grid/GridOperations.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::grid {
namespace {

using test::expectThrow;

/// A square of two triangles, one of them curved, and a quadrilateral beside it. Ids have gaps and
/// node 40 has no element; node id n lies at (n, n^2, -n).
GridData threeElements() {
  GridData grid;
  grid.numElements = 3;
  grid.nodeIds = {2, 3, 5, 7, 11, 13, 17, 19, 40};
  grid.numNodes = grid.nodeIds.size();
  for (const u64 id : grid.nodeIds) {
    const auto x = static_cast<double>(id);
    grid.coordinates.insert(grid.coordinates.end(), {x, x * x, -x});
  }
  grid.elementTypes = {203, 206, 304};
  grid.offsets = {0, 3, 9, 13};
  grid.connectivity = {7, 2, 3, 2, 7, 5, 11, 13, 17, 19, 5, 2, 3};
  grid.elementTags = {4, 5, 6};
  return grid;
}

TEST(PointCloud, TakesTheNodesOfASpatialMeshOnly) {
  GridData mesh = threeElements();
  EXPECT_EQ(pointCloudOfNodes(mesh), makePointCloud(mesh.coordinates, 9));

  mesh.worldDim = 2;
  expectThrow<utility::RuntimeError>(
      [&] { (void)pointCloudOfNodes(mesh); },
      "A point needs 3 coordinates, but the nodes of the mesh have 2");
}

TEST(ElementsToPoints, AveragesAllNodesOrTheVerticesOnly) {
  const GridData grid = threeElements();
  std::vector<double> centres(9);
  std::vector<double> vertices(9);

  ElementsToPoints(grid, centres);
  vertexMeans(grid, vertices);

  EXPECT_EQ(elementNodes(grid, 0), (std::vector<double>{7, 49, -7, 2, 4, -2, 3, 9, -3}));
  EXPECT_EQ(centres, (std::vector<double>{4, 62. / 3, -4, 55. / 6, 657. / 6, -55. / 6, 7.25,
                                          399. / 4, -7.25}));
  EXPECT_EQ(vertices,
            (std::vector<double>{4, 62. / 3, -4, 14. / 3, 26, -14. / 3, 7.25, 399. / 4, -7.25}));
}

TEST(ElementsToPoints, RefusesWhatItCannotFind) {
  std::vector<double> centres(9);
  const auto run = [&](const GridData& grid, std::size_t size) {
    return [&, size] { ElementsToPoints(grid, std::span(centres).first(size)); };
  };
  GridData unknownNode = threeElements();
  unknownNode.connectivity[4] = 6;
  GridData shortList = threeElements();
  shortList.connectivity.resize(12);

  expectThrow<std::runtime_error>(run(threeElements(), 8), "Provided coordinate span is too small");
  expectThrow<std::runtime_error>(run(unknownNode, 9), "ElementsToPoints: node 6 not found");
  expectThrow<std::runtime_error>(run(shortList, 9), "ElementsToPoints: entity id 12 not found 12");
}

TEST(FilterElements, RefusesANumberPastTheTypes) {
  GridData grid = threeElements();
  grid.elementTypes.pop_back();

  expectThrow<std::runtime_error>([&] { (void)FilterElements(grid, std::array<u64, 1>{12}, 10); },
                                  "FilterElements: filter ID 2 too high (size=2): #n=9 #e=3==2");
}

TEST(FilterUnusedNodes, DropsNodesWithoutElementAndRefusesUnknownOnes) {
  GridData grid = threeElements();
  FilterUnusedNodes(grid);
  EXPECT_EQ(grid.nodeIds, (std::vector<u64>{2, 3, 5, 7, 11, 13, 17, 19}));
  EXPECT_EQ(grid.numNodes, 8);
  EXPECT_EQ(elementNodes(grid, 1), elementNodes(threeElements(), 1));

  grid.connectivity[0] = u64{1} << 60;  // far too sparse for marks
  expectThrow<std::runtime_error>([&] { FilterUnusedNodes(grid); },
                                  "FilterUnusedNodes: node 1152921504606846976 not found ");
  EXPECT_EQ(elementNodes(grid, 1), elementNodes(threeElements(), 1));
}

TEST(MergeGridData, PutsTogetherWhatFilterElementsTookApart) {
  GridData grid = threeElements();
  FilterUnusedNodes(grid);
  const GridData front = FilterElements(grid, std::array<u64, 1>{0}, 0);
  GridData back = FilterElements(grid, std::array<u64, 2>{1, 2}, 0);
  back.coordinates[0] = 1e9;  // node 2, of which the front has a copy

  EXPECT_EQ(MergeGridData(std::array{&front, &std::as_const(back)}), grid);
}

TEST(MergeGridData, RefusesListsThatDoNotFit) {
  GridData grid = threeElements();
  GridData flat = threeElements();
  flat.worldDim = 2;
  const auto merge = [&] { (void)MergeGridData(std::array<const GridData*, 2>{&grid, &flat}); };

  expectThrow<std::runtime_error>([] { (void)MergeGridData({}); }, "MergeGridData empty list");
  expectThrow<std::runtime_error>(merge, "MergeGridData world dimensions do not match");
  grid.worldDim = 2;
  expectThrow<std::runtime_error>(merge, "Sizes don't match");
}

}  // namespace
}  // namespace velmo::grid
