#pragma once

#include <string>

#include "samples/Density.hpp"
#include "samples/Points.hpp"
#include "samples/SampleRequest.hpp"
#include "samples/SurfaceMesh.hpp"

namespace velmo::samples {

/// A finished sample.
struct Sample {
  SurfaceMesh mesh;
  Density density;
  Points points;
};

/// The surface alone.
/// @throws utility::RuntimeError for lengths that are not positive
[[nodiscard]] SurfaceMesh makeMesh(const SampleRequest& request);

/// The density on a surface that `makeMesh` made of the same request.
/// @throws utility::RuntimeError "No closed form is known for a box or a plate"
[[nodiscard]] Density makeDensity(const SampleRequest& request, const SurfaceMesh& mesh);

/// Surface, density and points. Equal requests give equal bits.
/// @throws utility::RuntimeError if the request does not fit together
[[nodiscard]] Sample makeSample(const SampleRequest& request);

/// Writes `out`.vtkhdf, `out`.xyz and `out`.yaml and returns a few lines about their contents.
/// @throws utility::RuntimeError naming the file that cannot be written
[[nodiscard]] std::string writeSample(const SampleRequest& request, const Sample& sample);

}  // namespace velmo::samples
