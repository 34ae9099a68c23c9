#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "io/Types.hpp"
#include "samples/Bodies.hpp"
#include "samples/Density.hpp"
#include "samples/Points.hpp"
#include "samples/RawSolution.hpp"
#include "samples/SettingsFile.hpp"
#include "samples/SolutionWriter.hpp"
#include "samples/Vec3.hpp"

namespace velmo::samples {

enum class Body { Sphere, Box, Plate, Ellipsoid, SpherePair, DiscPair };
enum class DensityKind { Uniform, Linear, Exact };
enum class PointSet { Shell, Fibonacci, Line, Plane, Box, Surface, Near };

/// Everything that a sample is made of; the defaults are those of the tool.
struct SampleRequest {
  Body body = Body::Sphere;
  MeshOptions mesh{.refine = 8};
  double radius = 1.0;
  std::optional<double> lowerRadius;
  double gap = 0.5;
  Vec3 semiAxes{1.0, 0.8, 0.6};
  Vec3 size{1.0, 1.0, 1.0};
  Vec3 centre{};
  bool renumber = false;

  DensityKind densityKind = DensityKind::Uniform;
  double sigma = 1.0;
  std::optional<double> charge;
  double voltage = 1.0;

  PieceOptions pieces;
  StorageOptions storage;

  PointSet points = PointSet::Shell;
  u64 count = 1000;
  double rMin = 1.5;
  double rMax = 3.0;
  Vec3 from{-2.0, -2.0, 1.5};
  Vec3 to{2.0, 2.0, 1.5};

  SettingsOptions settings{.femOrder = 0, .fmm = {}, .quad = {}, .tree = {}, .numThreads = 0};
  u64 seed = 1;
  std::filesystem::path out;  ///< the files' common name without extension
};

/// The radii of a pair of spheres, upper one first.
[[nodiscard]] std::array<double, 2> radiiOf(const SampleRequest& request);

/// Reads `--name=value` or `--name value` for each option.
/// @param arguments without the name of the program
/// @throws utility::RuntimeError telling the option and what it expects
[[nodiscard]] SampleRequest parseRequest(std::span<const char* const> arguments);

/// The options with their values, meanings and defaults.
[[nodiscard]] std::string requestHelp();

/// A finished sample.
struct Sample {
  SurfaceMesh mesh;
  Density density;
  Points points;
};

/// The surface alone.
[[nodiscard]] SurfaceMesh makeMesh(const SampleRequest& request);

[[nodiscard]] Density makeDensity(const SampleRequest& request, const SurfaceMesh& mesh);

[[nodiscard]] Sample makeSample(const SampleRequest& request);

/// Writes `out`.vtkhdf, `out`.xyz and `out`.yaml and tells in a few lines what they hold.
[[nodiscard]] std::string writeSample(const SampleRequest& request, const Sample& sample);

}  // namespace velmo::samples
