#pragma once

#include <filesystem>

#include "samples/RawSolution.hpp"

namespace velmo::samples {

/// Stored width of integer datasets; `Mixed` alternates from dataset to dataset.
enum class IntegerWidth { Bits64, Bits32, Mixed };

/// How string attributes are stored: padded with zeros to a fixed size, or of variable length.
enum class TextForm { Fixed, Variable };

/// How the arrays are stored.
struct StorageOptions {
  bool gzip = false;  ///< chunked datasets compressed at level 6
  IntegerWidth integers = IntegerWidth::Bits64;
  TextForm strings = TextForm::Fixed;
};

/// Writes a solution file (`.vtkhdf`), replacing an existing one.
/// @throws utility::RuntimeError naming the file, group, dataset or attribute that failed
void writeSolution(const std::filesystem::path& path, const RawSolution& raw,
                   const StorageOptions& options = {});

}  // namespace velmo::samples
