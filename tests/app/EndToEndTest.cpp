#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "app/SampleRuns.hpp"
#include "io/Format.hpp"
#include "samples/ClosedForm.hpp"

namespace orvanta {
namespace {

TEST(EndToEnd, EvaluatesAllKindsOfSolutions) {
  struct Case {
    std::string name;
    std::function<void(SampleRequest&)> change;
  };
  const auto mesh = [](u64 densityOrder, Elements elements, u64 refine, u64 geometryOrder) {
    return [=](SampleRequest& r) {
      r.settings.femOrder = densityOrder;
      r.mesh = {elements, refine, geometryOrder};
    };
  };
  const auto triangles = Elements::Triangles;
  const auto quads = Elements::Quadrilaterals;
  const std::vector<Case> cases{
      {"order 0, triangles", mesh(0, triangles, 4, 1)},
      {"order 1, quadrilaterals", mesh(1, quads, 7, 1)},
      {"order 2, mixed", mesh(2, Elements::Mixed, 5, 1)},
      {"order 3, triangles", mesh(3, triangles, 3, 1)},
      {"order 3, mixed, curved", mesh(3, Elements::Mixed, 4, 3)},
      {"curved triangles", mesh(1, triangles, 4, 2)},
      {"curved quadrilaterals", mesh(0, quads, 7, 2)},
      {"eight nodes",
       [](SampleRequest& r) {
         r.mesh = {Elements::Mixed, 6, 2, true};
       }},
      {"linear density, box",
       [](SampleRequest& r) {
         r.body = velmo::samples::Body::Box;
         r.mesh = {Elements::Mixed, 6};
         r.settings.femOrder = 1;
         r.densityKind = velmo::samples::DensityKind::Linear;
       }},
      {"pieces with ghosts",
       [](SampleRequest& r) {
         r.pieces = {.numPieces = 4, .shuffle = true};
         r.renumber = true;
         r.settings.femOrder = 1;
         r.mesh.elements = Elements::Mixed;
       }},
      {"compressed pieces of narrow integers",
       [](SampleRequest& r) {
         r.pieces.numPieces = 3;
         r.storage = {.gzip = true,
                      .integers = velmo::samples::IntegerWidth::Mixed,
                      .strings = velmo::samples::TextForm::Variable};
       }},
      {"points on the surface", [](SampleRequest& r) { r.points = PointSet::Surface; }},
      {"points inside",
       [](SampleRequest& r) {
         // Of a uniform charge they would see no field.
         r.densityKind = velmo::samples::DensityKind::Linear;
         r.rMin = 0.0;
         r.rMax = 0.9;
       }},
      {"points in a plane",
       [](SampleRequest& r) {
         r.points = PointSet::Plane;
         r.count = 400;
       }},
      {"uniform tree",
       [](SampleRequest& r) { r.settings.tree = {.maxLevel = 2, .adaptive = false}; }},
      {"one point", [](SampleRequest& r) { r.count = 1; }}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const TemporaryFolder folder;
    SampleRequest request = smallRequest(folder.path() / "s");
    c.change(request);
    const Sample sample = write(request);

    const ProgramResult result = run(request.out);

    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    expectTable(folder.path() / "s.csv", request, sample);
  }
}

TEST(EndToEnd, FindsTheFieldOfAChargedSphereWithoutSettings) {
  const TemporaryFolder folder;
  SampleRequest request = smallRequest(folder.path() / "s");
  request.mesh.refine = 10;
  request.charge = 2.0;
  request.count = 100;
  request.centre = {0.5, -1.0, 2.0};
  (void)write(request);

  const ProgramResult result = velmo::test::runProgram(
      ORVANTA_POST_PROGRAM, {"-i", "s.vtkhdf", "-p", "s.xyz"}, folder.path());

  EXPECT_EQ(result.status, 0) << result.err;
  const Table table = readTable(folder.path() / "s.csv");
  const velmo::samples::ChargedSphere sphere{request.centre, 1.0, 2.0};
  for (u64 i = 0; i < request.count; ++i) {
    const velmo::samples::Vec3 x{table.points[3 * i], table.points[3 * i + 1],
                                 table.points[3 * i + 2]};
    EXPECT_NEAR(table.values.potential[i] / sphere.potential(x), 1.0, 2e-3);
    const auto gradient = sphere.gradient(x);
    for (u64 c = 0; c < 3; ++c)
      EXPECT_NEAR(table.values.field[3 * i + c], gradient[c],
                  1e-2 * velmo::samples::norm(gradient));
  }
}

TEST(EndToEnd, GivesCoincidentPointsTheSameRow) {
  const TemporaryFolder folder;
  const SampleRequest request = smallRequest(folder.path() / "s");
  Sample sample = makeSample(request);
  const velmo::samples::Points some(sample.points.begin(), sample.points.begin() + 9);
  for (int k = 0; k < 40; ++k) sample.points.insert(sample.points.end(), some.begin(), some.end());
  (void)writeSample(request, sample);

  EXPECT_EQ(run(request.out).status, 0);

  expectTable(folder.path() / "s.csv", request, sample);
  const Table table = readTable(folder.path() / "s.csv");
  for (u64 k = 0; k < 40; ++k)
    for (u64 i = 0; i < 3; ++i)
      EXPECT_NEAR(table.values.potential[request.count + 3 * k + i], table.values.potential[i],
                  1e-14 * std::abs(table.values.potential[i]));
}

TEST(EndToEnd, RepeatsItsBitsForAnyNumberOfThreads) {
  const TemporaryFolder folder;
  SampleRequest request = smallRequest(folder.path() / "s");
  request.mesh = {Elements::Mixed, 8};
  request.settings.femOrder = 1;
  request.count = 600;
  request.rMin = 0.8;
  std::set<std::string> tables;
  for (const u64 threads : {1, 2, 4, 4}) {
    request.settings.numThreads = threads;
    (void)write(request);
    const ProgramResult result = run(request.out);
    EXPECT_NE(result.out.find(velmo::io::format("# Using {} threads per rank\n", threads)),
              std::string::npos);
    tables.insert(readFile(folder.path() / "s.csv"));
  }
  EXPECT_EQ(tables.size(), 1U);
}

TEST(EndToEnd, TakesTheTreeFromTheMainSolversSettings) {
  const TemporaryFolder folder;
  const SampleRequest request = smallRequest(folder.path() / "s");
  (void)write(request);
  const std::string settings = readFile(folder.path() / "s.yaml");
  const std::string key = "leafSize: 30";
  const std::size_t mainTree = settings.find(key);
  const std::size_t postTree = settings.find(key, mainTree + 1);
  ASSERT_NE(postTree, std::string::npos);
  const auto tableWith = [&](const std::string& text) {
    folder.write("s.yaml", text);
    EXPECT_EQ(run(request.out).status, 0);
    return readFile(folder.path() / "s.csv");
  };
  const std::string table = tableWith(settings);

  EXPECT_EQ(tableWith(std::string(settings).replace(postTree, key.size(), "leafSize: 9999")),
            table);
  EXPECT_NE(tableWith(std::string(settings).replace(mainTree, key.size(), "leafSize: 9999")),
            table);
}

TEST(EndToEnd, KeepsRunsInOneFolderApart) {
  const TemporaryFolder folder;
  std::vector<SampleRequest> requests;
  std::vector<Sample> samples;
  for (const auto* name : {"a", "b", "b.c"}) {
    requests.push_back(smallRequest(folder.path() / name));
    requests.back().mesh.refine = 2 + requests.size();
    requests.back().seed = requests.size();
    samples.push_back(write(requests.back()));
  }

  EXPECT_EQ(run(requests[0].out).status, 0);
  EXPECT_EQ(run(requests[1].out, {"--output=other.vtk"}).status, 0);
  EXPECT_EQ(run(requests[2].out).status, 0);

  expectTable(folder.path() / "a.csv", requests[0], samples[0]);
  expectTable(folder.path() / "other.csv", requests[1], samples[1]);
  expectTable(folder.path() / "b.c.csv", requests[2], samples[2]);
  const auto numFiles =
      std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator());
  EXPECT_EQ(numFiles, 3 * 3 + 3);
}

// Points crowded beside coarse elements make leaves that are smaller than the elements.
TEST(EndToEnd, NeedsNoLeavesAsLargeAsTheElements) {
  const TemporaryFolder folder;
  SampleRequest request = smallRequest(folder.path() / "s");
  request.mesh.refine = 2;
  request.points = PointSet::Line;
  request.from = {1.02, 0.0, 0.0};
  request.to = {1.03, 0.0, 0.0};
  request.count = 500;
  for (const u64 leafSize : {u64{30}, u64{1000}}) {
    request.settings.tree.leafSize = leafSize;
    const Sample sample = write(request);

    const ProgramResult result = run(request.out);

    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    expectTable(folder.path() / "s.csv", request, sample);
  }
}

}  // namespace
}  // namespace orvanta
