#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "grid/Coordinates.hpp"
#include "grid/ElementGeometry.hpp"
#include "grid/ElementTypes.hpp"
#include "grid/Geometry.hpp"
#include "grid/GridData.hpp"
#include "grid/GridOperations.hpp"
#include "grid/SurfaceElements.hpp"
#include "grid/SurfaceWorlds.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::grid {
namespace {

using velmo::test::expectThrow;

constexpr u64 kCodes[] = {0,   102, 103, 104, 203, 206, 210, 304, 308, 309, 316, 404, 410, 420, 508,
                          520, 527, 532, 564, 606, 615, 618, 626, 640, 705, 713, 714, 725, 730};

constexpr const char* kShapeNames[] = {"",    "Segment", "Tria",  "Quad",
                                       "Tet", "Hex",     "Prism", "Pyramid"};

TEST(ElementTypes, PropertiesOfEachCodeFitTogether) {
  for (const u64 code : kCodes) {
    SCOPED_TRACE(code);
    const topo::ReferenceType shape = referenceTypeOf(code);
    const u64 base = linearBaseOf(code);
    const std::string name = nameOf(code);

    EXPECT_EQ(numNodesOf(code), code == 0 ? 1 : code % 100);
    EXPECT_EQ(dimensionOf(code), topo::dimension(shape));
    EXPECT_EQ(numNodesOf(base), topo::numVertices(shape));
    EXPECT_EQ(orderOf(base), code == 0 ? 0 : 1);
    EXPECT_EQ(linearBaseOf(base), base);
    EXPECT_EQ(name, code == 0
                        ? "Point"
                        : std::string(kShapeNames[code / 100]) + std::to_string(numNodesOf(code)));
    EXPECT_EQ(elementTypeFromWord(name), code);
    EXPECT_EQ(elementTypeFromWord(std::to_string(code)), code);
  }
}

TEST(ElementTypes, TheTwelveNodeQuadrilateralHasOnlyAName) {
  const std::string refusal = "velmo::grid::detail_::applyToEets: must not reach this point (";

  EXPECT_EQ(elementTypeFromWord("Quad12"), 312);
  EXPECT_EQ(elementTypeFromWord("312"), 312);
  EXPECT_EQ(nameOf(999), "999");
  expectThrow<std::runtime_error>([] { (void)orderOf(312); }, refusal + "Quad12)");
  expectThrow<std::runtime_error>([] { (void)numNodesOf(999); }, refusal + "999)");
}

TEST(ElementTypes, OnlyTheExactWordsAreKnown) {
  for (const std::string word : {"", "tria3", "Tria", "0203", "+203", "203 ", "00", "204", "203x"})
    expectThrow<utility::RuntimeError>([&] { (void)elementTypeFromWord(word); },
                                       "Failed to identify the ET: " + word);
}

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

TEST(MergeGridData, PutsTogetherWhatFilterElementsTookApart) {
  GridData grid = threeElements();
  FilterUnusedNodes(grid);
  const GridData front = FilterElements(grid, std::array<u64, 1>{0}, 0);
  GridData back = FilterElements(grid, std::array<u64, 2>{1, 2}, 0);
  back.coordinates[0] = 1e9;  // node 2, of which the front has a copy

  EXPECT_EQ(MergeGridData(std::array{&front, &std::as_const(back)}), grid);
}

/// A segment, a quadrilateral and a triangle on five nodes with ids 10, 20, ... along a bent strip.
GridData strip() {
  GridData data;
  data.numElements = 3;
  data.numNodes = 5;
  data.coordinates = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 2, 1, 1};
  data.nodeIds = {10, 20, 30, 40, 50};
  data.elementTypes = {102, 304, 203};
  data.offsets = {0, 2, 6, 9};
  data.connectivity = {10, 20, 10, 20, 30, 40, 20, 50, 30};
  data.elementTags = {9, 5, 3};
  return data;
}

TEST(Geometry, StoresTheNodesBeyondTheVertices) {
  GridData data;
  test::addElement(data, 206, [](double x, double y) { return test::Point{x, y, 0.0}; });
  std::ranges::reverse(data.connectivity);

  const Geometry::Grid geometry = surfaceGeometry(data);

  ASSERT_NE(geometry.highOrderNodes, nullptr);
  EXPECT_EQ(geometry.highOrderNodes->ids, (std::vector<u64>{2, 1, 0}));
  EXPECT_EQ(surfaceTopology(data).connectivity, (std::vector<u64>{5, 4, 3}));
  data.offsets = {0, 5};
  expectThrow<utility::RuntimeError>([&] { (void)surfaceGeometry(data); },
                                     "Element 0 does not hold the 6 nodes of its type");
}

TEST(Geometry, RefusesDamagedGridsWithItsWords) {
  struct Case {
    const char* text;
    void (*damage)(GridData&);
  };
  for (const Case& c : {
           Case{"ElementInfo: A list of mixed order elements has been provided (min=1, max=2)",
                [](GridData& d) { d.elementTypes[2] = 206; }},
           Case{"velmo::grid::detail_::applyToEets: must not reach this point (Quad12)",
                [](GridData& d) { d.elementTypes[1] = 312; }},
           Case{"velmo::grid::detail_::applyToEets: must not reach this point (999)",
                [](GridData& d) { d.elementTypes[1] = 999; }},
           Case{"velmo::grid::Coordinates::Coordinates():Node '20' seems to be a duplicate!",
                [](GridData& d) { d.nodeIds[4] = 20; }},
           Case{"Input coordinate dimension too small", [](GridData& d) { d.worldDim = 2; }},
           Case{"Coordinates: the lists of a grid don't fit together",
                [](GridData& d) { d.coordinates.pop_back(); }},
           Case{"Geometry::Grid: there are fewer types than elements",
                [](GridData& d) { d.elementTypes.pop_back(); }},
       }) {
    GridData data = strip();
    c.damage(data);
    expectThrow<std::runtime_error>([&] { (void)surfaceGeometry(data); }, c.text);
  }
}

TEST(Geometry, RefusesDamagedConnectivityBeforeItIsRead) {
  const char* const tooShort = "Element 2 does not hold the 3 nodes of its type";
  for (const std::vector<u64>& offsets :
       {std::vector<u64>{0, 2, 6, 10}, {0, 2, 6, 8}, {0, 2, 6}, {0, 2, 6, 5}}) {
    GridData data = strip();
    data.offsets = offsets;
    expectThrow<utility::RuntimeError>([&] { (void)surfaceTopology(data); }, tooShort);
  }
}

TEST(SurfaceElements, CollectsElementsInAnyOrderAndRefusesWhatDoesNotFit) {
  GridData data;
  data.numElements = 2;
  data.numNodes = 5;
  data.coordinates = strip().coordinates;
  data.nodeIds = strip().nodeIds;
  data.elementTypes = {304, 203};
  data.offsets = {0, 4, 7};
  data.connectivity = {10, 20, 30, 40, 20, 50, 30};
  const std::vector<std::uint32_t> order{1, 0};

  const SurfaceElements elements = surfaceElements(data, order);

  EXPECT_EQ(elements.nodes(0)[3], 2.0);
  EXPECT_DOUBLE_EQ(elements.sizes[1], std::sqrt(2.0));
  EXPECT_EQ(elements.codes, (std::vector<u64>{203, 304}));
  GridData bad = data;
  bad.connectivity[5] = 51;
  expectThrow<std::out_of_range>([&] { (void)surfaceElements(bad); },
                                 "invalid unordered_map<K, T> key");
  bad = data;
  bad.offsets[2] = 6;
  expectThrow<utility::RuntimeError>([&] { (void)surfaceElements(bad); },
                                     "Element 1 does not hold the 3 nodes of its type");
  bad = data;
  bad.coordinates.resize(14);
  expectThrow<utility::RuntimeError>([&] { (void)surfaceElements(bad); },
                                     "surfaceElements: the lists don't fit together");
  bad = data;
  bad.elementTypes[1] = 404;
  expectThrow<utility::RuntimeError>([&] { (void)surfaceElements(bad); },
                                     "surfaceElements: a Tet4 is no surface");
}

}  // namespace
}  // namespace velmo::grid
