#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>

#include "io/Types.hpp"
#include "samples/Bodies.hpp"
#include "samples/CommandLine.hpp"
#include "samples/InputFiles.hpp"
#include "samples/Pieces.hpp"
#include "samples/SolutionFile.hpp"
#include "samples/Vec3.hpp"

namespace velmo::samples {

/// Shape of the surface.
enum class Body { Sphere, Box, Plate, Ellipsoid, SpherePair, DiscPair };
/// Charge per unit of area: the same everywhere, linear in z, or that of the closed form.
enum class DensityKind { Uniform, Linear, Exact };
/// Where the evaluation points lie.
enum class PointSet { Shell, Fibonacci, Line, Plane, Box, Surface, Near };

/// Everything that a sample is made of; the defaults are those of the tool. Lengths have the unit
/// of the solution file; a charge q at distance r has the potential q / (4 pi r).
struct SampleRequest {
  Body body = Body::Sphere;
  MeshOptions mesh{.refine = 8};
  double radius = 1.0;                ///< of the sphere, the upper sphere, the discs
  std::optional<double> lowerRadius;  ///< of the lower sphere of a pair; as the upper one
  double gap = 0.5;                   ///< between the surfaces of a pair
  Vec3 semiAxes{1.0, 0.8, 0.6};       ///< of the ellipsoid
  Vec3 size{1.0, 1.0, 1.0};           ///< edges of the box; the first is that of the plate
  Vec3 centre{};
  bool renumber = false;  ///< nodes and elements in random order

  DensityKind densityKind = DensityKind::Uniform;
  double sigma = 1.0;            ///< charge per unit of area
  std::optional<double> charge;  ///< total charge that the density is scaled to
  double voltage = 1.0;          ///< potential of the upper sphere of a pair

  PieceOptions pieces;
  StorageOptions storage;

  PointSet points = PointSet::Shell;
  u64 count = 1000;   ///< points at most
  double rMin = 1.5;  ///< radii of the shell, or distances in element sizes
  double rMax = 3.0;
  Vec3 from{-2.0, -2.0, 1.5};  ///< ends of the line, corners of the plane or of the box
  Vec3 to{2.0, 2.0, 1.5};

  SettingsOptions settings{.femOrder = 0, .fmm = {}, .quad = {}, .tree = {}, .numThreads = 0};
  u64 seed = 1;               ///< of all random numbers
  std::filesystem::path out;  ///< the files' common name without extension

  /// `out` with an extension such as ".xyz".
  [[nodiscard]] std::filesystem::path file(const char* extension) const;

  /// The radii of a pair of spheres, upper one first.
  [[nodiscard]] std::array<double, 2> radii() const;
};

/// Reads the options of make_sample: `--name=value` or `--name value` for each.
/// @param words without the name of the program
/// @throws utility::RuntimeError with the option and what it expects
[[nodiscard]] SampleRequest parseRequest(Words words);

/// The options with their values, meanings and defaults.
[[nodiscard]] std::string requestHelp();

}  // namespace velmo::samples
