#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "app/ProcessPost.hpp"
#include "app/SampleRuns.hpp"
#include "grid/GridData.hpp"
#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace orvanta {
namespace {

/// A charged sphere with points around it, in units of length of all sizes.
class LengthScales : public ::testing::Test {
 protected:
  LengthScales() : request_(smallRequest(folder_.path() / "s")) {
    request_.mesh.refine = 3;
    request_.settings.tree.leafSize = 10;
    request_.count = 60;
    sample_ = makeSample(request_);
  }

  /// The table of the program's evaluation.
  Table evaluate() {
    (void)writeSample(request_, sample_);
    velmo::conf::ESProblem problem;
    problem.fem.order = sample_.density.order;
    problem.bem.tree = request_.settings.tree;
    problem.postEval.fmm = request_.settings.fmm;
    problem.postEval.quad = request_.settings.quad;
    problem.postProc.outBasename = (folder_.path() / "t").string();
    const auto points = velmo::grid::makePointCloud(sample_.points, sample_.points.size() / 3);
    return readTable(
        std::get<0>(processPost(request_.out.string() + ".vtkhdf", points, problem, 0)));
  }

  TemporaryFolder folder_;
  SampleRequest request_;
  Sample sample_;
};

TEST_F(LengthScales, GiveTheSameBitsForAllDegreesUpTo80) {
  for (const u64 degree : {5, 80}) {
    request_.settings.fmm = {.leafQuadratureOrder = 20, .degree = degree};
    const Sample original = sample_;
    const Table expected = evaluate();
    const Errors e = velmo::accuracy::errors(expected.values, allPairs(request_, sample_));
    EXPECT_LT(e.potential, degree == 5 ? 1e-3 : 1e-6) << degree;
    EXPECT_LT(e.field, degree == 5 ? 1e-2 : 1e-5) << degree;
    for (const int power : {-332, -10, 30, 332}) {
      for (double& x : sample_.mesh.coordinates) x = std::ldexp(x, power);
      for (double& x : sample_.points) x = std::ldexp(x, power);

      Table table = evaluate();
      for (double& v : table.values.potential) v = std::ldexp(v, power);
      for (double& v : table.values.field) v = std::ldexp(v, 2 * power);

      EXPECT_EQ(table.points, sample_.points);
      EXPECT_EQ(table.values.potential, expected.values.potential) << degree << " " << power;
      EXPECT_EQ(table.values.field, expected.values.field) << degree << " " << power;
      sample_ = original;
    }
  }
}

TEST_F(LengthScales, RefuseWhatIsOutOfProportion) {
  sample_.points[3 * 7 + 1] = -1e155;
  velmo::test::expectThrow<velmo::utility::RuntimeError>(
      [this] { (void)evaluate(); },
      "Coordinates of point 7 (counted from 0) are more than 2^256 times the size of the smallest "
      "element away from it");
  sample_.points[3 * 7 + 1] = 1.5;
  sample_.mesh.coordinates[3 * 5] = 1e155;
  velmo::test::expectThrow<velmo::utility::RuntimeError>(
      [this] { (void)evaluate(); },
      "Coordinates of node 5 (counted from 0) are more than 2^256 times the size of the smallest "
      "element away from it");
}

}  // namespace
}  // namespace orvanta
