#include "grid/Geometry.hpp"

#include <gtest/gtest.h>

#include <algorithm>

#include "grid/Coordinates.hpp"
#include "grid/ElementGeometry.hpp"
#include "grid/ElementTypes.hpp"
#include "grid/SurfaceElements.hpp"
#include "grid/SurfaceWorlds.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::grid {
namespace {

using velmo::test::expectThrow;

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

GridData cloud() {
  GridData data;
  data.worldDim = 4;
  data.numElements = 3;
  data.numNodes = 3;
  data.coordinates = {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0};
  data.nodeIds = {30, 10, 20};
  data.elementTypes = {0, 0, 0};
  data.offsets = {0, 1, 2, 3};
  data.connectivity = {10, 20, 30};
  data.elementTags = {1, 1, 1};
  return data;
}

TEST(TopologyOf, TakesTheElementsOfDimensionTwo) {
  const GridData data = strip();

  const topo::Grid<2> topology = surfaceTopology(data);
  const Geometry::Grid geometry = surfaceGeometry(data);

  EXPECT_EQ(topology.entityCounts(), (std::array<u64, 8>{5, 6, 1, 1, 0, 0, 0, 0}));
  EXPECT_EQ(topology.elementTags, (std::vector<u64>{5, 3}));
  EXPECT_EQ(geometry.elementTypes, (std::vector<u64>{304, 203}));
  EXPECT_EQ(geometry.order, 1U);
  EXPECT_EQ(geometry.highOrderNodes, nullptr);
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
  EXPECT_EQ(ElementInfo({}).order(), 0U);
  expectThrow<std::runtime_error>(
      [] { (void)geometricBasis(102); },
      "velmo::grid::detail_::applyToEets: must not reach this point (Segment2)");
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
  EXPECT_DOUBLE_EQ(elements.areas[1], 1.0);
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

TEST(Coordinates, RefuseWhatIsNoPointCloud) {
  struct Case {
    const char* text;
    void (*damage)(GridData&);
  };
  for (const Case& c : {
           Case{"Input coordinate dimension too small", [](GridData& d) { d.worldDim = 2; }},
           Case{"Constructor only allowed for point clouds",
                [](GridData& d) { d.elementTypes[1] = 102; }},
           Case{"velmo::grid::Coordinates::Coordinates():Node '10' seems to be a duplicate!",
                [](GridData& d) { d.connectivity[2] = 10; }},
           Case{"Coordinates: the lists of a grid don't fit together",
                [](GridData& d) { d.connectivity.clear(); }},
       }) {
    GridData data = cloud();
    c.damage(data);
    expectThrow<std::runtime_error>([&] { (void)Coordinates(data); }, c.text);
  }
}

}  // namespace
}  // namespace velmo::grid
