#pragma once

#include <cstdint>

#include "grid/GridData.hpp"
#include "io/UnfilledVector.hpp"

namespace velmo::h5 {

/// The grid as stored in the file: one piece per process that wrote it, one after the other in
/// every array. Points and cells near the border of a piece may be copies of those of another one;
/// their ghost byte is not zero.
struct RawPieces {
  io::UnfilledVector<std::int64_t> numConnectivityIds;  ///< per piece
  io::UnfilledVector<std::int64_t> numPoints;           ///< per piece
  io::UnfilledVector<std::int64_t> numCells;            ///< per piece
  io::UnfilledVector<double> points;                    ///< shape (points, 3)
  io::UnfilledVector<std::uint8_t> types;               ///< VTK cell type of each cell
  io::UnfilledVector<std::int64_t> connectivity;        ///< numbers of points within the piece
  io::UnfilledVector<std::int64_t> offsets;  ///< numCells + 1 per piece, from 0 in each piece
  io::UnfilledVector<std::uint8_t> pointGhosts;
  io::UnfilledVector<std::int64_t> pointIds;  ///< global, 0 .. number of owned points - 1
  io::UnfilledVector<std::uint8_t> cellGhosts;
  io::UnfilledVector<std::int64_t> cellIds;  ///< global, 0 .. number of owned cells - 1
};

/// Puts points and cells at the places of their global ids, so that neither the order of the pieces
/// nor that of the entities in them matters. If copies differ, the last one counts.
///
/// @pre    the lengths of all arrays agree with the counts per piece, which are not negative
/// @return nodes and elements in the order of their global ids; connectivity of global node ids
/// @throws utility::RuntimeError "Min. node id has to be zero",
///         "Max. node id has to be nodes.size()-1", "Celltype not supported",
///         "Unknown number of nodes ('<n>)' for tria type" and "... for quad type", and texts that
///         name the array for missing ids, ids and offsets out of range and similar faults
/// @throws std::out_of_range "invalid vector subscript" for a point number beyond all points
[[nodiscard]] grid::GridData mergePieces(const RawPieces& raw);

}  // namespace velmo::h5
