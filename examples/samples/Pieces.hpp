#pragma once

#include "io/Types.hpp"
#include "samples/Density.hpp"
#include "samples/SolutionFile.hpp"
#include "samples/SurfaceMesh.hpp"

namespace velmo::samples {

/// How a surface is cut into pieces.
struct PieceOptions {
  u64 numPieces = 1;
  bool shuffle = false;  ///< points, cells and coefficients of a piece in random order
  u64 seed = 1;
};

/// Cuts the surface into slabs with equal numbers of elements along its longest extent. A shared
/// node belongs to the first piece that contains it. Each piece also has ghost copies: one layer of
/// its neighbours' cells, with their coefficients, and all their points that it doesn't own.
/// @throws utility::RuntimeError "Cannot cut <n> elements into <p> pieces" for 0 pieces and for
/// more than elements, "Density and mesh have different numbers of elements"
[[nodiscard]] SolutionFile pieces(const SurfaceMesh& mesh, const Density& density,
                                  const PieceOptions& options = {});

}  // namespace velmo::samples
