#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "conf/ESProblemYaml.hpp"
#include "conf/LoadYamlFile.hpp"
#include "grid/PointReaders.hpp"
#include "io/Exception.hpp"
#include "samples/SampleRequest.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::samples {

namespace {

constexpr double eps = std::numeric_limits<double>::epsilon();

double radiusOf(const Points& points, u64 i, const Vec3& centre) {
  return norm(Vec3{points[3 * i], points[3 * i + 1], points[3 * i + 2]} - centre);
}

std::string contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::filesystem::path scratch(const std::string& name) {
  return std::filesystem::path(::testing::TempDir()) / ("velmo_" + name);
}

SampleRequest parse(const std::vector<const char*>& words) { return parseRequest(words); }

TEST(Points, OfAShellFillItsVolumeEvenly) {
  const Vec3 centre{1.0, 2.0, 3.0};
  const u64 count = 20000;
  for (const Points& points :
       {randomInShell(count, centre, 1.0, 2.0, 5), fibonacciShell(count, centre, 1.0, 2.0)}) {
    ASSERT_EQ(points.size(), 3 * count);
    u64 numInner = 0;
    Vec3 mean{};
    for (u64 i = 0; i < count; ++i) {
      const double r = radiusOf(points, i, centre);
      EXPECT_GE(r, 1.0 - 8 * eps);
      EXPECT_LE(r, 2.0 + 8 * eps);
      numInner += r < 1.5 ? 1 : 0;
      for (u64 axis = 0; axis < 3; ++axis) mean.at(axis) += points[3 * i + axis];
    }
    // (1.5^3 - 1) / (2^3 - 1) of the volume; five standard deviations of a binomial count.
    const double share = 2.375 / 7.0;
    EXPECT_NEAR(static_cast<double>(numInner), share * count,
                5.0 * std::sqrt(share * (1.0 - share) * count));
    EXPECT_LT(norm((1.0 / count) * mean - centre), 5.0 * 2.0 / std::sqrt(count));
  }
  EXPECT_THROW((void)randomInShell(1, centre, 2.0, 1.0, 1), utility::RuntimeError);
}

TEST(Points, OfLinesPlanesAndBoxesLieWhereAsked) {
  const Points line = onLine(3, {0, 0, 0}, {1, 2, 4});
  EXPECT_EQ(line, (Points{0, 0, 0, 0.5, 1, 2, 1, 2, 4}));
  EXPECT_EQ(onLine(1, {1, 2, 3}, {4, 5, 6}), (Points{1, 2, 3}));

  const Points plane = onPlane(2, 2, {0, 0, 1}, {2, 0, 0}, {0, 3, 0});
  EXPECT_EQ(plane, (Points{0, 0, 1, 2, 0, 1, 0, 3, 1, 2, 3, 1}));

  const Points cloud = randomInBox(500, {0, 2, 4}, {1, 3, 5}, 1);
  for (u64 i = 0; i < cloud.size(); ++i) {
    const double low = 2.0 * static_cast<double>(i % 3);
    EXPECT_TRUE(cloud[i] >= low && cloud[i] < low + 1.0);
  }
}

TEST(Points, OnTheSurfaceLieOnIt) {
  const SurfaceMesh mesh = sphere({Elements::Mixed, 4, 3, false}, 2.0, {0.0, 1.0, 0.0});

  const Points points = onSurface(300, mesh, 11);

  for (u64 i = 0; i < 300; ++i)
    EXPECT_NEAR(radiusOf(points, i, {0.0, 1.0, 0.0}), 2.0, 1e-3) << "cubic elements, h = 0.7";
}

/// The size of an element is sqrt(2 area): here sqrt(2) / 2 for all.
TEST(Points, OffTheSurfaceKeepTheirDistancesInElementSizes) {
  const SurfaceMesh mesh = plate({Elements::Quadrilaterals, 4, 2, false}, 2.0);

  for (const double side : {1.0, -1.0}) {
    const Points points = offSurface(200, mesh, side * 0.5, side * 0.75, 7);
    for (u64 i = 2; i < points.size(); i += 3) {
      EXPECT_GE(side * points[i], 0.5 * std::sqrt(0.5) * (1.0 - 8 * eps));
      EXPECT_LE(side * points[i], 0.75 * std::sqrt(0.5) * (1.0 + 8 * eps));
    }
  }
}

TEST(Points, ReadBackFromTheirFileToTheSameBits) {
  const auto path = scratch("points.xyz");
  Points points = randomInShell(200, {}, 1e-9, 1e9, 3);
  points.insert(points.end(), {0.1, -1.0 / 3.0, 5e-300});

  writeXyz(path, points, "three columns");

  std::ifstream stream(path);
  Points read;
  grid::readXyz(stream, read);
  EXPECT_EQ(read, points);
  std::filesystem::remove(path);
}

TEST(SettingsFile, DecodesToTheValuesItWasWrittenWith) {
  SettingsOptions options;
  options.femOrder = 2;
  options.fmm = {.leafQuadratureOrder = 9, .degree = 7};
  options.quad = {.order = 6, .minRelDist = 1.0 / 3.0, .maxLevel = 4};
  options.numThreads = 3;
  for (const bool adaptive : {true, false}) {
    options.tree = {.leafSize = 42, .maxLevel = 3, .adaptive = adaptive};
    const auto path = scratch("settings.yaml");
    writeSettings(path, options);

    const conf::ESProblem problem = conf::decodeESProblem(conf::loadYamlFile(path)["esProblem"]);

    EXPECT_EQ(problem.fem.order, 2U);
    EXPECT_EQ(problem.postEval.fmm.degree, 7U);
    EXPECT_EQ(problem.postEval.fmm.leafQuadratureOrder, 9U);
    EXPECT_EQ(problem.postEval.quad.order, 6U);
    EXPECT_EQ(problem.postEval.quad.minRelDist, 1.0 / 3.0);
    EXPECT_EQ(problem.bem.tree.adaptive, adaptive);
    if (adaptive)
      EXPECT_EQ(problem.bem.tree.leafSize, 42U);
    else
      EXPECT_EQ(problem.bem.tree.maxLevel, 3U);
    EXPECT_EQ(problem.numThreads, 3U);
    std::filesystem::remove(path);
  }
}

TEST(SampleRequest, TakesValuesInBothForms) {
  const SampleRequest request =
      parse({"--body=box", "--size", "1,2,3.5", "--quad8", "--max-level=4", "--charge", "-2e-9",
             "--integers=mixed", "--out=a/b"});

  EXPECT_EQ(request.body, Body::Box);
  EXPECT_EQ(request.size, (Vec3{1.0, 2.0, 3.5}));
  EXPECT_TRUE(request.mesh.eightNodeQuads);
  EXPECT_FALSE(request.settings.tree.adaptive);
  EXPECT_EQ(request.settings.tree.maxLevel, 4U);
  EXPECT_EQ(request.charge, -2e-9);
  EXPECT_EQ(request.storage.integers, IntegerWidth::Mixed);
  EXPECT_EQ(request.out, "a/b");
}

TEST(SampleRequest, RefusesBadWordsInClearWords) {
  struct Refusal {
    std::vector<const char*> words;
    const char* message;
  };
  const std::vector<Refusal> refusals{
      {{}, "'--out' is required"},
      {{"--colour=red"}, "Unknown option '--colour'"},
      {{"sphere"}, "Expected an option, got 'sphere'"},
      {{"--gzip=yes"}, "'--gzip' takes no value"},
      {{"--refine"}, "'--refine' needs a value"},
      {{"--refine=0"}, "Bad value '0' of '--refine', expected N"},
      {{"--refine=-1"}, "Bad value '-1' of '--refine', expected N"},
      {{"--count=3x"}, "Bad value '3x' of '--count', expected N"},
      {{"--geometry-order=4"}, "Bad value '4' of '--geometry-order', expected 1|2|3"},
      {{"--body=cone"},
       "Bad value 'cone' of '--body', expected sphere|box|plate|ellipsoid|sphere-pair|disc-pair"},
      {{"--centre=1,2"}, "Bad value '1,2' of '--centre', expected X,Y,Z"},
      {{"--centre=1,2,3,4"}, "Bad value '1,2,3,4' of '--centre', expected X,Y,Z"},
      {{"--radius=nan"}, "Bad value 'nan' of '--radius', expected X"},
      {{"--sigma=inf"}, "Bad value 'inf' of '--sigma', expected X"},
      {{"--degree=2"}, "Bad value '2' of '--degree', expected N"},
      {{"--out=folder/"}, "Bad value 'folder/' of '--out', expected DIR/NAME"},
  };
  for (const Refusal& refusal : refusals) {
    test::expectThrow<utility::RuntimeError>([&] { (void)parse(refusal.words); }, refusal.message);
  }
}

TEST(Sample, OfOneSeedHasTheSameFilesEveryTime) {
  const auto write = [](const char* seed, const std::string& out) {
    const std::string target = "--out=" + scratch(out).string();
    const SampleRequest request =
        parse({"--refine=2", "--pieces=2", "--shuffle", "--renumber", seed, target.c_str()});
    EXPECT_NE(writeSample(request, makeSample(request)).find("80 elements, 42 nodes"),
              std::string::npos);
  };
  write("--seed=4", "first");
  write("--seed=4", "second");
  write("--seed=5", "third");

  for (const char* extension : {".vtkhdf", ".xyz", ".yaml"}) {
    const std::string first = contents(scratch("first").string() + extension);
    EXPECT_EQ(first, contents(scratch("second").string() + extension)) << extension;
    EXPECT_EQ(first == contents(scratch("third").string() + extension),
              extension == std::string(".yaml"));
  }
  for (const char* name : {"first", "second", "third"})
    for (const char* extension : {".vtkhdf", ".xyz", ".yaml"})
      std::filesystem::remove(scratch(name).string() + extension);
}

}  // namespace

}  // namespace velmo::samples
