#include "validation/Errors.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "samples/SampleRequest.hpp"

namespace velmo::validation {
namespace {

Row exactRow(const samples::ClosedForm& form, const samples::Vec3& x) {
  const samples::PointValue v = form.at({x[0], x[1], x[2]});
  Row row{x, static_cast<double>(v.potential), {}};
  for (u64 c = 0; c < 3; ++c) row.gradient[c] = static_cast<double>(v.gradient[c]);
  return row;
}

TEST(Errors, AreDividedByWhatTheSetHolds) {
  // An even sphere of radius 1 with the field 1 at its surface. The exact field is 1/4 and 1/16 at
  // the first points, the potential 1/2 and 1/4; inside there is no field.
  const auto ball = closedForm(samples::SampleRequest{});
  const std::vector<Row> exact{exactRow(*ball, {2, 0, 0}), exactRow(*ball, {0, 0, -4})};
  EXPECT_LT(againstClosedForm(exact, *ball).field.largest, 1e-15);

  std::vector<Row> rows = exact;
  rows[1].potential += 0.1;
  rows[1].gradient[0] += 0.03;
  rows[1].gradient[1] -= 0.04;
  for (const Errors& e : {againstClosedForm(rows, *ball), againstRun(rows, exact, *ball)}) {
    EXPECT_NEAR(e.potential.l2, 0.1 / std::hypot(0.5, 0.25), 1e-14);
    EXPECT_NEAR(e.potential.largest, 0.1 / 0.5, 1e-14);
    EXPECT_NEAR(e.field.l2, 0.05 / std::hypot(1.0 / 4.0, 1.0 / 16.0), 1e-14);
    EXPECT_NEAR(e.field.largest, 0.05 / 0.25, 1e-14);
  }

  rows[0].potential = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(againstClosedForm(rows, *ball).potential.largest <= 1e300);

  std::vector<Row> inside{exactRow(*ball, {0.5, 0, 0}), exactRow(*ball, {0, 0.1, 0})};
  inside[0].gradient[2] = 0.02;
  EXPECT_NEAR(againstClosedForm(inside, *ball).field.largest, 0.02, 1e-14);
}

}  // namespace
}  // namespace velmo::validation
