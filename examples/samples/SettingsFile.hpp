#pragma once

#include <filesystem>
#include <string>

#include "conf/MethodSettings.hpp"
#include "io/Types.hpp"

namespace velmo::samples {

/// The settings that this program acts on; the rest of the file is what every problem needs.
struct SettingsOptions {
  u64 femOrder = 0;                  ///< order of the density
  bem::fmm::Settings fmm;            ///< degree and order of the moments' quadrature
  bem::EvalQuadratureSettings quad;  ///< near field
  tree::Options tree;
  u64 numThreads = 0;  ///< 0 uses every processor
};

/// A complete settings file in YAML with a comment at each key that matters here.
[[nodiscard]] std::string settingsText(const SettingsOptions& options);

/// @throws utility::RuntimeError "Cannot write file '<path>'"
void writeSettings(const std::filesystem::path& path, const SettingsOptions& options);

}  // namespace velmo::samples
