#include "validation/PointSets.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "samples/ClosedForm.hpp"
#include "samples/MakeSample.hpp"

namespace velmo::validation {

namespace {

using samples::Body;
using samples::SampleRequest;

struct BodyCase {
  Body body;
  std::vector<std::string> sets;
};

/// Inside is where the exact field vanishes; everywhere else it doesn't.
TEST(PointSets, LieWhereTheirNamesSay) {
  const std::vector<BodyCase> cases{{Body::Sphere, {"far", "near", "inside"}},
                                    {Body::Ellipsoid, {"far", "near", "inside"}},
                                    {Body::SpherePair, {"far", "near", "inside", "gap"}},
                                    {Body::DiscPair, {"far", "near", "gap"}}};
  for (const BodyCase& expected : cases) {
    SampleRequest request;
    request.body = expected.body;
    request.mesh = {.refine = 8, .geometryOrder = 2};
    request.centre = {2.0, 0.0, -1.0};
    request.count = 60;
    const auto exact = closedForm(request);
    const std::vector<PointSet> sets = pointSets(request, makeMesh(request));

    ASSERT_EQ(sets.size(), expected.sets.size());
    for (u64 s = 0; s < sets.size(); ++s) {
      EXPECT_EQ(sets[s].name, expected.sets[s]);
      EXPECT_EQ(sets[s].count(), sets[s].name == "gap" ? 50U : 60U);
      for (u64 i = 0; i < sets[s].points.size(); i += 3) {
        const double* const x = sets[s].points.data() + i;
        const bool hasField = samples::norm(exact->at({x[0], x[1], x[2]}).gradient) > 0.0L;
        EXPECT_EQ(hasField, sets[s].name != "inside") << sets[s].name << " point " << i / 3;
      }
    }
  }
}

}  // namespace

}  // namespace velmo::validation
