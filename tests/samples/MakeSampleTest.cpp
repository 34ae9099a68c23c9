#include "samples/MakeSample.hpp"

#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "conf/ESProblemYaml.hpp"
#include "conf/LoadYamlFile.hpp"
#include "grid/ElementGeometry.hpp"
#include "grid/Geometry.hpp"
#include "grid/PointReaders.hpp"
#include "h5/SolutionReader.hpp"
#include "io/Exception.hpp"
#include "sfun/HierarchicalBasisFunction.hpp"
#include "support/ExpectThrow.hpp"
#include "support/RunProgram.hpp"
#include "support/TemporaryFolder.hpp"

namespace velmo::samples {
namespace {

constexpr double eps = std::numeric_limits<double>::epsilon();

SampleRequest parse(std::vector<const char*> words) {
  words.push_back("--out=a/b");
  return parseRequest(words);
}

TEST(SampleRequest, TakesValuesInBothForms) {
  const SampleRequest request = parse({"--body=box", "--size", "1,2,3.5", "--quad8",
                                       "--max-level=4", "--charge", "-2e-9", "--seed=7"});

  EXPECT_EQ(request.body, Body::Box);
  EXPECT_EQ(request.size, (Vec3{1.0, 2.0, 3.5}));
  EXPECT_TRUE(request.mesh.eightNodeQuads);
  EXPECT_FALSE(request.settings.tree.adaptive);
  EXPECT_EQ(request.settings.tree.maxLevel, 4U);
  EXPECT_EQ(request.charge, -2e-9);
  EXPECT_EQ(request.pieces.seed, 7U);
  EXPECT_EQ(request.out, "a/b");
}

TEST(SampleRequest, IsRefusedInClearWords) {
  const struct {
    std::vector<const char*> words;
    const char* refusal;
  } cases[] = {
      {{"--colour=red"}, "Unknown option '--colour'"},
      {{"sphere"}, "Expected an option, got 'sphere'"},
      {{"--gzip=yes"}, "'--gzip' takes no value"},
      {{"--refine=0"}, "Bad value '0' of '--refine', expected N"},
      {{"--count=3x"}, "Bad value '3x' of '--count', expected N"},
      {{"--geometry-order=4"}, "Bad value '4' of '--geometry-order', expected 1|2|3"},
      {{"--elements=tetra"}, "Bad value 'tetra' of '--elements', expected triangles|quads|mixed"},
      {{"--centre=1,2"}, "Bad value '1,2' of '--centre', expected X,Y,Z"},
      {{"--centre=1,2,3,4"}, "Bad value '1,2,3,4' of '--centre', expected X,Y,Z"},
      {{"--radius=0"}, "Bad value '0' of '--radius', expected X"},
      {{"--sigma=inf"}, "Bad value 'inf' of '--sigma', expected X"},
      {{"--max-level=22"}, "Bad value '22' of '--max-level', expected N"},
      {{"--out=folder/"}, "Bad value 'folder/' of '--out', expected DIR/NAME"},
      {{"--body=box", "--density=exact"}, "No closed form is known for a box or a plate"},
      {{"--size=1,-1,1", "--body=box"}, "The edges of a box must be positive"},
      {{"--points=plane", "--to=1,1,1"},
       "A plane needs '--from' and '--to' to share one coordinate"},
      {{"--points=box"}, "A box needs '--from' and '--to' to differ in every coordinate"},
      {{"--rmin=2", "--rmax=1"}, "A shell needs 0 <= inner radius <= outer radius, not 2 and 1"},
      {{"--density=linear", "--charge=1"},
       "A density without total charge cannot be scaled to one"},
  };
  for (const auto& c : cases)
    test::expectThrow<utility::RuntimeError>([&] { (void)makeSample(parse(c.words)); }, c.refusal);
  const char* const last[] = {"--refine"};
  test::expectThrow<utility::RuntimeError>([&] { (void)parseRequest(last); },
                                           "'--refine' needs a value");
  test::expectThrow<utility::RuntimeError>([] { (void)parseRequest({}); }, "'--out' is required");
}

TEST(Sample, ReadsBackToTheSameBitsHoweverItIsStored) {
  const test::TemporaryFolder folder;
  const std::vector<const char*> cases[] = {
      {"--body=sphere", "--elements=mixed", "--refine=2", "--geometry-order=3", "--gzip"},
      {"--body=box", "--refine=2", "--geometry-order=2", "--density-order=1", "--renumber",
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

TEST(SolutionFile, StoresWhatTheOptionsAskFor) {
  SolutionFile file;
  EXPECT_FALSE(StorageOptions{}.gzip);

  file.store({.gzip = true, .integers = IntegerWidth::Mixed, .strings = TextForm::Variable});

  EXPECT_TRUE(std::ranges::all_of(file.parts, &Part::isCompressed));
  EXPECT_EQ(file["BasisType"].stored, Stored::VariableText);
  EXPECT_EQ(file["FEOrder"].stored, Stored::Int64);
  // Every second of the nine integer datasets is narrow.
  const auto numNarrow = std::ranges::count(file.parts, Stored::Int32, &Part::stored);
  EXPECT_EQ(numNarrow, 4);
  EXPECT_EQ(file["GlobalDofIds"].stored, Stored::Int64);
  EXPECT_EQ(file["NumberOfDofIds"].stored, Stored::Int32);
}

TEST(Sample, OfOneSeedHasTheSameFilesEveryTime) {
  const test::TemporaryFolder folder;
  const auto write = [&folder](const char* seed, const char* name) {
    SampleRequest request = parse({"--refine=2", "--pieces=2", "--shuffle", "--renumber", seed});
    request.out = folder.path() / name;
    const std::string told = writeSample(request, makeSample(request));
    EXPECT_NE(told.find("80 elements, 42 nodes, 80 coefficients"), std::string::npos);
    EXPECT_NE(told.find(": 1000 points\n"), std::string::npos);
  };
  write("--seed=4", "first");
  write("--seed=4", "second");
  write("--seed=5", "third");
  for (const std::string extension : {".vtkhdf", ".xyz", ".yaml"}) {
    const std::string first = test::readFile(folder.path() / ("first" + extension));
    EXPECT_EQ(first, test::readFile(folder.path() / ("second" + extension))) << extension;
    EXPECT_EQ(first == test::readFile(folder.path() / ("third" + extension)), extension == ".yaml");
  }
}

TEST(Settings, DecodeToTheValuesTheyWereWrittenWith) {
  const test::TemporaryFolder folder;
  const std::string path = folder.path() / "s.yaml";
  SettingsOptions options{.femOrder = 2,
                          .fmm = {.leafQuadratureOrder = 9, .degree = 7},
                          .quad = {.order = 6, .minRelDist = 1.0 / 3.0, .maxLevel = 4},
                          .tree = {},
                          .numThreads = 3};
  for (const bool adaptive : {true, false}) {
    options.tree = {.leafSize = 42, .maxLevel = 3, .adaptive = adaptive};
    writeSettings(path, options);

    const conf::ESProblem problem = conf::decodeESProblem(conf::loadYamlFile(path)["esProblem"]);

    EXPECT_EQ(problem.fem.order, 2U);
    EXPECT_EQ(problem.postEval.fmm.degree, 7U);
    EXPECT_EQ(problem.postEval.fmm.leafQuadratureOrder, 9U);
    EXPECT_EQ(problem.postEval.quad.order, 6U);
    EXPECT_EQ(problem.postEval.quad.minRelDist, 1.0 / 3.0);
    EXPECT_EQ(problem.bem.tree.adaptive, adaptive);
    EXPECT_EQ(adaptive ? problem.bem.tree.leafSize : problem.bem.tree.maxLevel, adaptive ? 42 : 3);
    EXPECT_EQ(problem.numThreads, 3U);
  }
}

TEST(Pieces, OwnEachEntityOnceAndCarryGhosts) {
  const SurfaceMesh mesh = sphere({Elements::Mixed, 4, 2, false});
  const Density density = uniform(mesh, 1, 1.0);
  SolutionFile file = pieces(mesh, density, {.numPieces = 3, .shuffle = true, .seed = 7});

  const std::pair<const char*, u64> cases[] = {{"PointData/vtkGhostType", mesh.numNodes()},
                                               {"CellData/vtkGhostType", mesh.numElements()},
                                               {"GhostDofs", density.charges.size()}};
  for (const auto& [name, count] : cases) {
    EXPECT_EQ(static_cast<u64>(std::ranges::count(file.ints(name), 0)), count) << name;
    EXPECT_GT(file.ints(name).size(), count) << name;
  }
  EXPECT_FALSE(std::ranges::is_sorted(file.ints("CellData/vtkGlobalIds")));
  test::expectThrow<utility::RuntimeError>([&] { (void)pieces(mesh, density, {.numPieces = 145}); },
                                           "Cannot cut 144 elements into 145 pieces");
  test::expectThrow<utility::RuntimeError>([&] { file.write("/no/such/folder/s.vtkhdf"); },
                                           "Cannot write file '/no/such/folder/s.vtkhdf'");
}

/// Sum of c_i phi_i on one element at a reference point (x, y).
template <class Basis>
double valueOf(const Basis& basis, const double* c, const double* point) {
  std::vector<double> values(basis.numFunctions());
  basis.eval({point, 2}, values.data());
  double sum = 0.0;
  for (u64 i = 0; i < values.size(); ++i) sum += c[i] * values[i];
  return sum;
}

TEST(Density, OfItsOwnDegreeIsReproducedOnFlatElements) {
  const SurfaceMesh mesh = box({Elements::Mixed, 2, 1, false}, {1.0, 0.5, 2.0});
  const auto geometry = grid::surfaceGeometry(gridData(mesh));
  for (const u64 order : {0U, 1U, 2U, 3U}) {
    const auto sigma = [order](const double* x) {
      return std::pow(1.0 + x[0] - 2.0 * x[1] + 0.5 * x[2], static_cast<double>(order));
    };
    const Density density = projected(mesh, order, sigma);
    for (u64 e = 0; e < mesh.numElements(); ++e) {
      const auto element = geometry.element(mesh.vertices(e), e);
      const double point[2] = {0.7, 0.2};
      double x[3];
      double areaElement = 0.0;
      element.positions({point, 2}, x);
      element.areaElements({point, 2}, &areaElement);
      const double* const c = density.charges.data() + density.offsets[e];
      const double value = mesh.vertices(e).size() == 3
                               ? valueOf(sfun::TriangleL2Basis(order), c, point)
                               : valueOf(sfun::QuadrilateralL2Basis(order), c, point);
      // The inverse of the Gram matrix loses some digits at order 3.
      EXPECT_NEAR(value, sigma(x) * areaElement, 1e4 * eps * areaElement) << "element " << e;
    }
  }
}

TEST(Density, KeepsTheChargeOfCurvedElementsAtEveryOrder) {
  const SurfaceMesh mesh = sphere({Elements::Mixed, 2, 3, false}, 0.5);
  const auto sigma = [](const double* x) { return 2.0 + x[0] * x[1] - x[2]; };
  const Density constants = projected(mesh, 0, sigma);
  for (const u64 order : {1U, 2U, 3U}) {
    const Density density = projected(mesh, order, sigma);
    for (u64 e = 0; e < mesh.numElements(); ++e)
      EXPECT_NEAR(density.charges[density.offsets[e]], constants.charges[e], 100 * eps);
  }
  EXPECT_NEAR(scaledTo(constants, 7.0).totalCharge(), 7.0, 14 * eps);
}

double radiusOf(const Points& points, u64 i) {
  return norm(Vec3{points[3 * i], points[3 * i + 1], points[3 * i + 2]});
}

TEST(Points, LieWhereTheirNamesSay) {
  constexpr u64 kCount = 20000;
  for (const Points& points :
       {randomInShell(kCount, {}, 1.0, 2.0, 5), fibonacciShell(kCount, {}, 1.0, 2.0)}) {
    u64 numInner = 0;
    for (u64 i = 0; i < kCount; ++i) {
      EXPECT_TRUE(radiusOf(points, i) >= 1.0 - 8 * eps && radiusOf(points, i) <= 2.0 + 8 * eps);
      numInner += radiusOf(points, i) < 1.5 ? 1 : 0;
    }
    // (1.5^3 - 1) / (2^3 - 1) of the volume; five standard deviations of a binomial count.
    const double share = 2.375 / 7.0;
    EXPECT_NEAR(static_cast<double>(numInner), share * kCount,
                5.0 * std::sqrt(share * (1.0 - share) * kCount));
  }
  const SampleRequest plane =
      parse({"--points=plane", "--from=0,0,1", "--to=2,3,1", "--count=5", "--refine=1"});
  EXPECT_EQ(makeSample(plane).points, (Points{0, 0, 1, 2, 0, 1, 0, 3, 1, 2, 3, 1}));
  EXPECT_EQ(onLine(3, {0, 0, 0}, {1, 2, 4}), (Points{0, 0, 0, 0.5, 1, 2, 1, 2, 4}));
  const Points onSphere = onSurface(300, sphere({Elements::Mixed, 4, 3, false}, 2.0), 11);
  for (u64 i = 0; i < 300; ++i) EXPECT_NEAR(radiusOf(onSphere, i), 2.0, 1e-3);
  // All elements have the size sqrt(2 area) = sqrt(2) / 2.
  const SurfaceMesh sheet = plate({Elements::Quadrilaterals, 4, 2, false}, 2.0);
  for (const double side : {1.0, -1.0}) {
    const Points points = offSurface(200, sheet, side * 0.5, side * 0.75, 7);
    for (u64 i = 2; i < points.size(); i += 3)
      EXPECT_NEAR(side * points[i], 0.625 * std::sqrt(0.5), (0.125 + eps) * std::sqrt(0.5));
  }
}

}  // namespace
}  // namespace velmo::samples
