#pragma once

#include <string>
#include <vector>

#include "samples/Points.hpp"
#include "samples/SampleRequest.hpp"
#include "samples/SurfaceMesh.hpp"

namespace velmo::validation {

/// Points of one kind, measured together.
struct PointSet {
  std::string name;
  samples::Points points;

  [[nodiscard]] u64 count() const noexcept { return points.size() / 3; }
};

/// Where the points of the sets are.
struct PlaceOptions {
  double nearLow = 0.1;   ///< least distance from the elements in element sizes, sqrt(2 area)
  double nearHigh = 1.0;  ///< greatest one
  u64 gapCount = 50;
};

/// The places where a body's result is compared with its closed form, `count` points in most sets:
/// "far", 1.5 to 3 radii of the enclosing sphere away; "near", next to the elements; "inside" a
/// closed body, up to 0.8 of its extent; `gapCount` on the axis in the "gap" of a pair. The same
/// request gives the same points.
[[nodiscard]] std::vector<PointSet> pointSets(const samples::SampleRequest& request,
                                              const samples::SurfaceMesh& mesh,
                                              const PlaceOptions& places = {});

/// All sets in one list, one after the other.
[[nodiscard]] samples::Points joined(const std::vector<PointSet>& sets);

}  // namespace velmo::validation
