#include "validation/Errors.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "samples/SampleRequest.hpp"

namespace velmo::validation {

namespace {

/// Even sphere of radius 1 with the field 1 at its surface.
std::unique_ptr<samples::ClosedForm> ball() { return closedForm(samples::SampleRequest{}); }

Row exactRow(const samples::Vec3& x) {
  const samples::PointValue v = ball()->at({x[0], x[1], x[2]});
  return {x,
          static_cast<double>(v.potential),
          {static_cast<double>(v.gradient[0]), static_cast<double>(v.gradient[1]),
           static_cast<double>(v.gradient[2])}};
}

/// The exact field is 1/4 and 1/16 here, the potential 1/2 and 1/4.
std::vector<Row> outside() { return {exactRow({2, 0, 0}), exactRow({0, 0, -4})}; }

TEST(Errors, AreZeroForTheClosedFormItself) {
  const Errors e = againstClosedForm(outside(), *ball());

  EXPECT_LT(e.potential.largest, 1e-15);
  EXPECT_LT(e.field.largest, 1e-15);
}

TEST(Errors, AreDividedByWhatTheSetHolds) {
  std::vector<Row> rows = outside();
  rows[1].potential += 0.1;
  rows[1].gradient[0] += 0.03;
  rows[1].gradient[1] -= 0.04;

  for (const Errors& e : {againstClosedForm(rows, *ball()), againstRun(rows, outside(), *ball())}) {
    EXPECT_NEAR(e.potential.l2, 0.1 / std::hypot(0.5, 0.25), 1e-14);
    EXPECT_NEAR(e.potential.largest, 0.1 / 0.5, 1e-14);
    EXPECT_NEAR(e.field.l2, 0.05 / std::hypot(1.0 / 4.0, 1.0 / 16.0), 1e-14);
    EXPECT_NEAR(e.field.largest, 0.05 / 0.25, 1e-14);
  }
}

TEST(Errors, OfAFieldThatShouldVanishAreMeasuredByTheSurfaces) {
  std::vector<Row> rows{exactRow({0.5, 0, 0}), exactRow({0, 0.1, 0})};
  rows[0].gradient[2] = 0.02;

  const Errors e = againstClosedForm(rows, *ball());

  EXPECT_NEAR(e.field.l2, 0.02 / std::sqrt(2.0), 1e-14);
  EXPECT_NEAR(e.field.largest, 0.02, 1e-14);
}

TEST(Errors, AreNoNumberWhereAValueIsNone) {
  for (u64 bad = 0; bad < 2; ++bad) {
    std::vector<Row> rows = outside();
    rows[bad].potential = std::numeric_limits<double>::quiet_NaN();

    const Errors e = againstClosedForm(rows, *ball());

    EXPECT_FALSE(e.potential.l2 <= 1e300);
    EXPECT_FALSE(e.potential.largest <= 1e300) << "row " << bad;
  }
}

}  // namespace

}  // namespace velmo::validation
