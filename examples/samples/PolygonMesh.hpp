#pragma once

#include <array>
#include <span>
#include <vector>

#include "io/Types.hpp"
#include "samples/SurfaceMesh.hpp"
#include "samples/Vec3.hpp"

namespace velmo::samples {

/// Triangle or quadrilateral given by the numbers of its corners, counter-clockwise from outside.
struct Face {
  std::array<u64, 4> corners{};
  u64 numCorners = 3;
};

/// The coarse form of a body, from which its mesh is made: refine, then raise the order.
struct PolygonMesh {
  std::vector<Vec3> vertices;
  std::vector<Face> faces;
};

/// Every edge cut into `n` equal parts: n^2 faces of the same kind for each face. The old vertices
/// keep their numbers; new ones follow, those on an edge once for both of its faces.
/// @throws utility::RuntimeError "A mesh needs at least one part per edge"
[[nodiscard]] PolygonMesh refined(const PolygonMesh& mesh, u64 n);

/// Which quadrilaterals to cut along a diagonal.
enum class Split { All, EverySecond };

/// Quadrilaterals cut into two triangles each.
[[nodiscard]] PolygonMesh triangulated(const PolygonMesh& mesh, Split which);

/// Nodes of a quadrilateral of geometric order 2.
enum class QuadNodes { Full, EdgesOnly };

/// Elements of geometric order 1 to 3 whose nodes lie on the flat faces at the reference element's
/// node points. Neighbours share the nodes of their common edge.
/// @throws utility::RuntimeError "Geometric order must be 1, 2 or 3, not <n>"
[[nodiscard]] SurfaceMesh withOrder(const PolygonMesh& mesh, u64 order, QuadNodes quadNodes);

}  // namespace velmo::samples
