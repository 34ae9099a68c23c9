#pragma once

#include <hdf5.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <variant>
#include <vector>

#include "h5/Handle.hpp"

namespace velmo::test {

/// How an array lies in the file.
enum class Stored { UInt8, Int32, Int64, Double, Text, Compound, Missing };
constexpr int kNumStored = 7;

using Ints = std::vector<std::int64_t>;
using Doubles = std::vector<double>;

/// An array or, with `isAttribute`, a list of numbers beside a group.
struct RawArray {
  std::string path;
  std::variant<Ints, Doubles> values;
  Stored stored = Stored::Int64;
  bool isAttribute = false;
  int rank = 1;  ///< 0 stores the first value, 2 rows of `rowLength`, 3 adds an extent of 1
  hsize_t rowLength = 1;
  bool isDeflated = false;
  hsize_t unwritten = 0;  ///< extent declared beyond the values, for which the file has no room

  [[nodiscard]] Ints& ints() { return std::get<0>(values); }
  [[nodiscard]] Doubles& doubles() { return std::get<1>(values); }
  [[nodiscard]] std::size_t size() const {
    return std::visit([](const auto& list) { return list.size(); }, values);
  }
};

/// A text attribute.
struct RawText {
  enum class Form { Variable, Fixed, ZeroPadded, BlankPadded, Number, Missing };
  std::string group;
  std::string name;
  std::string text;
  Form form = Form::Fixed;
};

/// The contents of a solution file as plain data: any part may be altered before it is written.
/// By default a triangle (0, 1, 2) and a quadrilateral (1, 3, 4, 2) in two pieces; the second piece
/// has copies of the shared points and of the triangle. The density is of order 0.
struct RawSolution {
  std::vector<std::string> groups{"/VTKHDF", "/VTKHDF/PointData", "/VTKHDF/CellData", "/ABB",
                                  "/ABB/L2"};
  std::vector<RawText> texts{{"/VTKHDF", "Type", "UnstructuredGrid"},
                             {"/ABB/L2", "BasisType", "L2"}};
  std::vector<RawArray> arrays{
      {"/VTKHDF/Version", Ints{2, 0}, Stored::Int64, true},
      {"/VTKHDF/NumberOfConnectivityIds", Ints{3, 7}},
      {"/VTKHDF/NumberOfPoints", Ints{3, 5}},
      {"/VTKHDF/NumberOfCells", Ints{1, 2}},
      {"/VTKHDF/Points", Doubles{0, 0, 0, 1, 0, 0, 1, 1, 0,  // piece 0
                                 2, 0, 0, 1, 0, 0, 1, 1, 0, 2, 1, 0.5, 0, 0, 0},
       Stored::Double, false, 2, 3},
      {"/VTKHDF/Types", Ints{69, 70, 69}, Stored::UInt8},
      {"/VTKHDF/Connectivity", Ints{0, 1, 2, /* piece 1 */ 1, 0, 3, 2, 4, 1, 2}},
      {"/VTKHDF/Offsets", Ints{0, 3, /* piece 1 */ 0, 4, 7}},
      {"/VTKHDF/PointData/vtkGhostType", Ints{0, 0, 0, 0, 1, 2, 0, 1}, Stored::UInt8},
      {"/VTKHDF/PointData/vtkGlobalIds", Ints{0, 1, 2, 3, 1, 2, 4, 0}},
      {"/VTKHDF/CellData/vtkGhostType", Ints{0, 0, 1}, Stored::UInt8},
      {"/VTKHDF/CellData/vtkGlobalIds", Ints{1, 0, 1}},
      {"/ABB/L2/FEOrder", Ints{0}, Stored::Int64, true},
      {"/ABB/L2/NumberOfDofIds", Ints{1, 2}},
      {"/ABB/L2/GlobalDofIds", Ints{1, 0, 1}},
      {"/ABB/L2/GhostDofs", Ints{0, 0, 1}, Stored::UInt8},
      {"/ABB/L2/charges", Doubles{-2.5, 4, -2.5}, Stored::Double},
  };

  /// Array by the end of its path.
  [[nodiscard]] RawArray& operator[](const std::string& name);
  [[nodiscard]] Ints& ints(const std::string& name) { return (*this)[name].ints(); }

  void write(const std::filesystem::path& path) const;
};

}  // namespace velmo::test
