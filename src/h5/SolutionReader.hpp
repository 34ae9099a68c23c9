#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "comm/Comm.hpp"
#include "grid/GridData.hpp"

namespace velmo::h5 {

/// A surface charge density on a boundary grid of triangles and quadrilaterals.
struct VtkHdfSolution {
  std::int64_t feOrder = 0;     ///< polynomial order of the density
  std::vector<double> charges;  ///< coefficient of each global degree of freedom
  grid::GridData grid;          ///< elements and nodes in the order of their global ids, tags 0
};

/// Switches off the clean-up of the HDF5 library at the end of the process: it allocates memory,
/// and if there is none it ends the process by a signal. The reader closes its files itself. Call
/// this before the first use of the library.
void skipLibraryCleanUp() noexcept;

/// Reads a ".vtkhdf" solution: all pieces, merged by their global ids. Objects of the file that
/// don't belong to the grid and the density are ignored.
///
/// @throws utility::RuntimeError (std::out_of_range for a point number beyond all points) whose
///         text names what is missing in the file or does not fit together, see SolutionReader.cpp,
///         Handle.hpp, Dataset.hpp and MergePieces.hpp
[[nodiscard]] VtkHdfSolution readSolution(comm::Comm comm, const std::filesystem::path& path);

/// Checks that there are as many charges as the elements have shape functions of order p =
/// `feOrder`: (p + 1)(p + 2)/2 on a triangle, (p + 1)^2 on a quadrilateral. Call this after
/// comparing the order with the expected one, since a wrong order leads to a wrong count.
///
/// @throws utility::RuntimeError "FEOrder <p> needs <n> charges for this grid, but there are <m>"
///         and, for an order that no file of this size can have, "FEOrder <p> is not possible with
///         <m> charges"
void checkChargeCount(const VtkHdfSolution& solution);

}  // namespace velmo::h5
