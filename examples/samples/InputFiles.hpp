#pragma once

#include <filesystem>
#include <string>

#include "conf/MethodSettings.hpp"
#include "io/Types.hpp"
#include "samples/Points.hpp"

/// The text files that the program reads besides a solution file: points and settings.
namespace velmo::samples {

/// The settings that this program acts on; the rest of the file is what every problem needs.
struct SettingsOptions {
  u64 femOrder = 0;                  ///< order of the density
  bem::fmm::Settings fmm;            ///< degree and order of the moments' quadrature
  bem::EvalQuadratureSettings quad;  ///< near field
  tree::Options tree;
  u64 numThreads = 0;  ///< 0 uses every processor
};

/// Writes an `.xyz` file: a comment line, the count, one point per line with 17 significant digits,
/// which read back to the same bits.
/// @throws utility::RuntimeError "Cannot write file '<path>'"
void writeXyz(const std::filesystem::path& path, const Points& points, const std::string& comment);

/// Writes a complete settings file in YAML with a comment at each key that matters here.
/// @throws utility::RuntimeError "Cannot write file '<path>'"
void writeSettings(const std::filesystem::path& path, const SettingsOptions& options);

}  // namespace velmo::samples
