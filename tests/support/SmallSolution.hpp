#pragma once

#include "samples/SolutionFile.hpp"

namespace velmo::test {

/// A triangle (0, 1, 2) and a quadrilateral (1, 3, 4, 2) in two pieces; the second piece has copies
/// of the shared points and of the triangle. The density is of order 0.
inline samples::SolutionFile smallSolution() {
  samples::SolutionFile file;
  file.ints("NumberOfConnectivityIds") = {3, 7};
  file.ints("NumberOfPoints") = {3, 5};
  file.ints("NumberOfCells") = {1, 2};
  file.doubles("Points") = {0, 0, 0, 1, 0, 0, 1, 1, 0,  // piece 0
                            2, 0, 0, 1, 0, 0, 1, 1, 0, 2, 1, 0.5, 0, 0, 0};
  file.ints("Types") = {69, 70, 69};
  file.ints("Connectivity") = {0, 1, 2, /* piece 1 */ 1, 0, 3, 2, 4, 1, 2};
  file.ints("Offsets") = {0, 3, /* piece 1 */ 0, 4, 7};
  file.ints("PointData/vtkGhostType") = {0, 0, 0, 0, 1, 2, 0, 1};
  file.ints("PointData/vtkGlobalIds") = {0, 1, 2, 3, 1, 2, 4, 0};
  file.ints("CellData/vtkGhostType") = {0, 0, 1};
  file.ints("CellData/vtkGlobalIds") = {1, 0, 1};
  file.ints("NumberOfDofIds") = {1, 2};
  file.ints("GlobalDofIds") = {1, 0, 1};
  file.ints("GhostDofs") = {0, 0, 1};
  file.doubles("charges") = {-2.5, 4, -2.5};
  return file;
}

}  // namespace velmo::test
