#pragma once

#include <cstdint>
#include <vector>

#include "io/Types.hpp"
#include "samples/Density.hpp"
#include "samples/SurfaceMesh.hpp"

namespace velmo::samples {

/// The arrays of a solution file, dataset by dataset: the pieces of a run on several ranks one
/// behind the other. Made by `pieces`.
struct RawSolution {
  std::vector<std::int64_t> numberOfConnectivityIds;  ///< one per piece
  std::vector<std::int64_t> numberOfPoints;           ///< one per piece
  std::vector<std::int64_t> numberOfCells;            ///< one per piece
  std::vector<double> points;                         ///< shape (sum of numberOfPoints, 3)
  std::vector<std::uint8_t> types;                    ///< 69 triangle, 70 quadrilateral
  std::vector<std::int64_t> connectivity;             ///< positions among the points of the piece
  std::vector<std::int64_t> offsets;                  ///< numberOfCells + 1 per piece, each from 0
  std::vector<std::uint8_t> pointGhosts;              ///< 0 where the piece owns the point
  std::vector<std::int64_t> pointIds;                 ///< global ids
  std::vector<std::uint8_t> cellGhosts;
  std::vector<std::int64_t> cellIds;
  std::vector<std::int64_t> numberOfDofIds;  ///< one per piece
  std::vector<std::int64_t> dofIds;          ///< global ids of the coefficients
  std::vector<std::uint8_t> dofGhosts;
  std::vector<double> charges;
  std::int64_t feOrder = 0;
};

/// How a surface is cut into pieces.
struct PieceOptions {
  u64 numPieces = 1;
  bool shuffle = false;  ///< points, cells and coefficients of a piece in random order
  u64 seed = 1;
};

/// Cuts the surface into slabs with equal numbers of elements along its longest extent. A shared
/// node belongs to the first piece that holds it. Each piece also carries ghost copies: one layer
/// of its neighbours' cells, with their coefficients, and all their points that it doesn't own.
/// @throws utility::RuntimeError if there are more pieces than elements, or none
[[nodiscard]] RawSolution pieces(const SurfaceMesh& mesh, const Density& density,
                                 const PieceOptions& options = {});

}  // namespace velmo::samples
