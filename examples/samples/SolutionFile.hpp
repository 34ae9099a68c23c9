#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "io/Types.hpp"

namespace velmo::samples {

using Ints = std::vector<std::int64_t>;
using Doubles = std::vector<double>;

/// How a part is stored in the file. Numbers are little-endian, except `BigInt32`; `FixedText` has
/// the length of its text, and `Missing` omits the part. Numbers declared as a text or as a
/// compound, and a text declared as numbers, are created but stay empty.
enum class Stored {
  UInt8,
  Int32,
  BigInt32,
  Int64,
  Double,
  FixedText,
  VariableText,
  Compound,
  Missing
};
constexpr u64 kNumStored = 9;

/// A dataset of the file or, with `isAttribute`, an attribute of its group.
struct Part {
  std::string path;  ///< groups and name
  std::variant<Ints, Doubles, std::string> values;
  Stored stored = Stored::Int64;
  bool isAttribute = false;
  u64 rank = 1;  ///< 0 stores the first value alone, 2 rows of `rowLength`, 3 adds an extent of 1
  u64 rowLength = 1;
  bool isCompressed = false;  ///< chunks of 65,536 rows, deflated at level 6
  u64 unwritten = 0;  ///< extent declared beyond the values of a dataset; then nothing is written

  [[nodiscard]] Ints& ints() { return std::get<Ints>(values); }
  [[nodiscard]] Doubles& doubles() { return std::get<Doubles>(values); }
  [[nodiscard]] std::string& text() { return std::get<std::string>(values); }
  [[nodiscard]] u64 size() const {
    return std::visit([](const auto& list) { return list.size(); }, values);
  }
};

/// Stored width of integer datasets; `Mixed` alternates from dataset to dataset.
enum class IntegerWidth { Bits64, Bits32, Mixed };

/// How string attributes are stored: padded with zeros to a fixed size, or of variable length.
enum class TextForm { Fixed, Variable };

/// How the parts of a file are stored.
struct StorageOptions {
  bool gzip = false;  ///< compress the datasets
  IntegerWidth integers = IntegerWidth::Bits64;
  TextForm strings = TextForm::Fixed;
};

/// A solution file (`.vtkhdf`) as plain data: each part may be altered before it is written. The
/// pieces of a run on several ranks follow each other in each array. A new object has all parts
/// that the format requires, with empty arrays, for a density of order 0.
struct SolutionFile {
  /// Parts in other groups are not written.
  std::vector<std::string> groups{"/VTKHDF", "/VTKHDF/PointData", "/VTKHDF/CellData", "/ABB",
                                  "/ABB/L2"};

  std::vector<Part> parts{
      {"/VTKHDF/Type", "UnstructuredGrid", Stored::FixedText, true, 0},
      {"/VTKHDF/Version", Ints{2, 0}, Stored::Int64, true},
      {"/VTKHDF/NumberOfConnectivityIds", Ints{}},  // one per piece, as the other counts
      {"/VTKHDF/NumberOfPoints", Ints{}},
      {"/VTKHDF/NumberOfCells", Ints{}},
      {"/VTKHDF/Points", Doubles{}, Stored::Double, false, 2, 3},
      {"/VTKHDF/Types", Ints{}, Stored::UInt8},  // 69 triangle, 70 quadrilateral
      {"/VTKHDF/Connectivity", Ints{}},          // positions among the piece's points
      {"/VTKHDF/Offsets", Ints{}},               // number of cells + 1, from 0 per piece
      {"/VTKHDF/PointData/vtkGhostType", Ints{}, Stored::UInt8},  // 0 where the piece owns it
      {"/VTKHDF/PointData/vtkGlobalIds", Ints{}},
      {"/VTKHDF/CellData/vtkGhostType", Ints{}, Stored::UInt8},
      {"/VTKHDF/CellData/vtkGlobalIds", Ints{}},
      {"/ABB/L2/NumberOfDofIds", Ints{}},
      {"/ABB/L2/GlobalDofIds", Ints{}},
      {"/ABB/L2/GhostDofs", Ints{}, Stored::UInt8},
      {"/ABB/L2/charges", Doubles{}, Stored::Double},
      {"/ABB/L2/BasisType", "L2", Stored::FixedText, true, 0},
      {"/ABB/L2/FEOrder", Ints{0}, Stored::Int64, true},
  };

  /// The part whose path ends in "/" and `name`.
  /// @throws std::out_of_range "no part <name>"
  [[nodiscard]] Part& operator[](std::string_view name);
  [[nodiscard]] Ints& ints(std::string_view name) { return (*this)[name].ints(); }
  [[nodiscard]] Doubles& doubles(std::string_view name) { return (*this)[name].doubles(); }

  /// Stores all parts as the options ask for.
  void store(const StorageOptions& options);

  /// Writes the file, replacing an existing one. Equal parts give equal bytes.
  /// @throws utility::RuntimeError naming the file, group, dataset or attribute that failed
  void write(const std::filesystem::path& path) const;
};

}  // namespace velmo::samples
