#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <set>
#include <utility>

#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"
#include "topo/Entity.hpp"
#include "topo/Grid.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::topo {
namespace {

using utility::RuntimeError;

Grid<2> makeGrid(const std::vector<std::vector<u64>>& elements, std::vector<u64> tags = {}) {
  std::vector<u64> connectivity;
  std::vector<u64> offsets{0};
  for (const auto& element : elements) {
    connectivity.insert(connectivity.end(), element.begin(), element.end());
    offsets.push_back(connectivity.size());
  }
  if (tags.empty()) tags.assign(elements.size(), 0);
  return {elements.size(), std::move(connectivity), std::move(offsets), std::move(tags)};
}

/// A torus of rows x columns cells, every third of which is split into two triangles, with vertex
/// ids `first + stride * place`.
Grid<2> mixedTorus(u64 rows, u64 columns, u64 first, u64 stride) {
  std::vector<std::vector<u64>> elements;
  const auto id = [&](u64 i, u64 j) {
    return first + stride * ((i % rows) * columns + j % columns);
  };
  for (u64 i = 0; i < rows; ++i) {
    for (u64 j = 0; j < columns; ++j) {
      const u64 a = id(i, j);
      const u64 b = id(i + 1, j);
      const u64 c = id(i + 1, j + 1);
      const u64 d = id(i, j + 1);
      if ((i + j) % 3 == 0) {
        elements.push_back({a, b, c});
        elements.push_back({a, c, d});
      } else {
        elements.push_back({a, b, c, d});
      }
    }
  }
  return makeGrid(elements);
}

/// All entities of a codimension, by the grid's iterators.
template <u64 Codim, u64 Dim>
std::vector<Entity> entitiesOf(const Grid<Dim>& grid) {
  std::vector<Entity> entities;
  for (auto it = grid.template begin<Codim>(); it != grid.template end<Codim>(); ++it)
    entities.push_back(*it);
  return entities;
}

Grid<2> twoTriangles() { return makeGrid({{10, 20, 30}, {30, 20, 40}}, {7, 3}); }

TEST(SurfaceGrid, TwoTrianglesShareAnEdgeInTheOrientationOfTheFirst) {
  const Grid<2> grid = twoTriangles();

  EXPECT_EQ(grid.entityCounts(), (std::array<u64, 8>{4, 5, 2, 0, 0, 0, 0, 0}));
  EXPECT_EQ(grid.edges(), (std::vector<Edge>{{10, 20}, {20, 30}, {30, 10}, {20, 40}, {40, 30}}));
  EXPECT_EQ(grid.vertices(), (std::vector<u64>{10, 20, 30, 40}));
  EXPECT_EQ(grid.uniqueTags(), (std::vector<u64>{3, 7}));
  EXPECT_EQ(grid.vertexIndex(30), 2U);
}

TEST(SurfaceGrid, SatisfiesEulersFormulaAndFindsEveryEdgeFromBothSides) {
  struct Numbering {
    u64 first, stride;
  };
  for (const auto& [first, stride] :
       {Numbering{0, 1}, Numbering{1000, 3}, Numbering{5, u64{1} << 50}}) {
    const Grid<2> grid = mixedTorus(12, 9, first, stride);
    std::vector<u64> uses(grid.edges().size(), 0);

    EXPECT_EQ(grid.numEntities(2) + grid.numEntities(0), grid.numEntities(1));
    std::set<std::set<u64>> distinct;
    for (const Edge& edge : grid.edges()) distinct.insert({edge[0], edge[1]});
    EXPECT_EQ(distinct.size(), grid.edges().size());
    for (const Entity& element : entitiesOf<0>(grid)) {
      for (u64 i = 0; i < element.nodes().size(); ++i) {
        const Entity edge = grid.subEntity(element.index(), 1, i);
        EXPECT_TRUE(edge.isTemporary());
        ++uses[grid.index(edge)];
      }
    }
    EXPECT_TRUE(std::ranges::all_of(uses, [](u64 n) { return n == 2; }));
  }
}

TEST(SurfaceGrid, SaysWhichSubEntityIsMissing) {
  const Grid<2> grid = twoTriangles();
  const std::vector<u64> none{40, 20, 10};

  EXPECT_EQ(grid.find(none, false), kNone);
  test::expectThrow<RuntimeError>([&] { (void)grid.find(none, true); },
                                  "Failing (I) to find subEntity ={ 40 20 10}");

  test::expectThrow<std::runtime_error>([&] { (void)grid.find(std::vector<u64>(9), false); },
                                        "TinyVector::CAPACITY exceeded");
}

TEST(SurfaceGrid, RefusesWhatIsNoSurfaceAndWhatItDoesNotHold) {
  Grid<2> grid = twoTriangles();

  test::expectThrow<std::runtime_error>(
      [] {
        (void)makeGrid({{0, 1}});
      },
      "2-dim can only have 3 or 4 nodes");
  test::expectThrow<std::runtime_error>(
      [] {
        (void)makeGrid({{0, 1, 2, 3, 4}});
      },
      "2-dim can only have 3 or 4 nodes");
  const char* const unfitting = "topo::Grid<2>: connectivity, offsets and tags don't fit together";
  const std::vector<u64> abc{0, 1, 2};
  test::expectThrow<RuntimeError>([&] { Grid<2>(1, abc, {0, 4}, {0}); }, unfitting);
  test::expectThrow<RuntimeError>([&] { Grid<2>(1, abc, {0, 3}, {}); }, unfitting);
  test::expectThrow<RuntimeError>([&] { Grid<2>(kNone, abc, {}, {}); }, unfitting);
  test::expectThrow<RuntimeError>([&] { (void)grid.vertexIndex(11); },
                                  "Failed to find vertex 11 (dim=2, entity dim=0)");
  test::expectThrow<std::runtime_error>(
      [&] { (void)grid.subEntity(0, 1, 0).index(); },
      "This entity is only temporary, to get the index of its original use "
      "velmo::topo::Grid::index( entity ) instead");
  auto end = grid.end<1>();
  test::expectThrow<std::out_of_range>([&] { ++end; }, "Cannot increment beyond end");
  test::expectThrow<RuntimeError>([&] { grid.finishOwnerships(); },
                                  "Ownerships has not been created yet");
}

using enum ReferenceType;

constexpr double kEps = std::numeric_limits<double>::epsilon();

TEST(ReferenceElement, NodePointsStandInTheOrderVerticesEdgesInterior) {
  const NodePoints cubic = nodePoints(Triangle, 3);
  const std::vector<double> expected{0,      0,      1,      0,      1,      1,     1. / 3,
                                     0,      2. / 3, 0,      1,      1. / 3, 1,     2. / 3,
                                     2. / 3, 2. / 3, 1. / 3, 1. / 3, 2. / 3, 1. / 3};
  ASSERT_EQ(cubic.points.size(), expected.size());
  for (u64 i = 0; i < expected.size(); ++i) EXPECT_NEAR(cubic.points[i], expected[i], 2 * kEps);

  const NodePoints biquadratic = nodePoints(Quadrilateral, 2);
  EXPECT_EQ(biquadratic.points[16], 0.5);
  EXPECT_EQ(biquadratic.points[17], 0.5);
  EXPECT_EQ(nodePoints(Quadrilateral, 0).points, (std::vector{0.0, 0.0}));
}

TEST(ReferenceElement, RefusesWhatAShapeDoesNotHave) {
  using std::runtime_error;
  const char* const dispatch = "velmo::topo::detail_::applyToRets: must not reach this point";
  const char* const nodes = "topo::ReferenceElement::getSubEntityNodes::Wrong codim";
  const char* const counts = "topo::ReferenceElement::numSubEntities::Wrong codim";

  test::expectThrow<runtime_error>([] { (void)numSubEntities(Triangle, 3); }, counts);
  test::expectThrow<runtime_error>([] { (void)getSubEntityNodes(Line, 2, 0); }, nodes);
  test::expectThrow<runtime_error>([] { (void)getSubEntityNodes(Tetrahedron, 1, 0); }, nodes);
  test::expectThrow<std::out_of_range>([] { (void)getSubEntityNodes(Triangle, 1, 3); },
                                       "invalid array<T, N> subscript");
  test::expectThrow<runtime_error>([] { (void)dimension(None); }, dispatch);
  test::expectThrow<runtime_error>([] { (void)dimension(ReferenceType{42}); }, dispatch);
  test::expectThrow<runtime_error>([] { (void)nodePoints(Hexahedron, 1); }, dispatch);
  test::expectThrow<runtime_error>([] { (void)interiorNodePoints(Triangle, 2); },
                                   "Tria with p < 3 cannot have interior nodes");
  test::expectThrow<runtime_error>([] { (void)interiorNodePoints(Quadrilateral, 1); },
                                   "Quad with p < 2 cannot have interior nodes");
  test::expectThrow<runtime_error>([] { (void)referenceType(2, 5); },
                                   "2-dim can only have 3 or 4 nodes");
  test::expectThrow<runtime_error>([] { (void)referenceType(1, 3); },
                                   "1-dim can only have 2 nodes");
  test::expectThrow<runtime_error>([] { (void)referenceType(0, 2); }, "0-dim can only have 1 node");
}

}  // namespace
}  // namespace velmo::topo
