#include "samples/PolygonMesh.hpp"

#include <map>
#include <utility>

#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::samples {

namespace {

/// The n - 1 inner nodes of each edge, made once and found by both of its faces.
class EdgeNodes {
 public:
  EdgeNodes(std::vector<Vec3>& nodes, u64 n) : nodes_(nodes), n_(n) {}

  /// Node `k` of the edge from `a` to `b`; 0 is `a` and n is `b`.
  u64 node(u64 a, u64 b, u64 k) {
    if (k == 0) return a;
    if (k == n_) return b;
    if (a > b) return node(b, a, n_ - k);
    const auto [entry, isNew] = firstNodes_.try_emplace({a, b}, nodes_.size());
    if (isNew) {
      for (u64 i = 1; i < n_; ++i) {
        const double t = static_cast<double>(i) / static_cast<double>(n_);
        nodes_.push_back((1.0 - t) * nodes_[a] + t * nodes_[b]);
      }
    }
    return entry->second + k - 1;
  }

 private:
  std::vector<Vec3>& nodes_;
  u64 n_;
  std::map<std::pair<u64, u64>, u64> firstNodes_;
};

/// The point of the flat face at reference coordinates (x, y).
Vec3 pointOn(const Face& face, const std::vector<Vec3>& nodes, double x, double y) {
  const auto corner = [&](u64 i) { return nodes[face.corners[i]]; };
  if (face.numCorners == 3) return (1.0 - x) * corner(0) + (x - y) * corner(1) + y * corner(2);
  return (1.0 - y) * ((1.0 - x) * corner(0) + x * corner(1)) +
         y * ((1.0 - x) * corner(3) + x * corner(2));
}

/// The nodes of one face on the lattice (i/n, j/n) of its reference element.
class FaceLattice {
 public:
  FaceLattice(const Face& face, u64 n, EdgeNodes& edges, std::vector<Vec3>& nodes)
      : n_(n), ids_((n + 1) * (n + 1), kNone) {
    const bool isTriangle = face.numCorners == 3;
    for (u64 j = 0; j <= n; ++j) {
      for (u64 i = isTriangle ? j : 0; i <= n; ++i) {
        u64& id = ids_[j * (n_ + 1) + i];
        id = isTriangle ? onTriangleEdge(face, i, j, edges) : onQuadEdge(face, i, j, edges);
        if (id != kNone) continue;
        id = nodes.size();
        const auto h = 1.0 / static_cast<double>(n);
        nodes.push_back(
            pointOn(face, nodes, static_cast<double>(i) * h, static_cast<double>(j) * h));
      }
    }
  }

  [[nodiscard]] u64 operator()(u64 i, u64 j) const { return ids_[j * (n_ + 1) + i]; }

 private:
  [[nodiscard]] u64 onTriangleEdge(const Face& face, u64 i, u64 j, EdgeNodes& edges) const {
    const auto& c = face.corners;
    if (j == 0) return edges.node(c[0], c[1], i);
    if (i == n_) return edges.node(c[1], c[2], j);
    if (i == j) return edges.node(c[2], c[0], n_ - i);
    return kNone;
  }

  [[nodiscard]] u64 onQuadEdge(const Face& face, u64 i, u64 j, EdgeNodes& edges) const {
    const auto& c = face.corners;
    if (j == 0) return edges.node(c[0], c[1], i);
    if (i == n_) return edges.node(c[1], c[2], j);
    if (j == n_) return edges.node(c[2], c[3], n_ - i);
    if (i == 0) return edges.node(c[3], c[0], n_ - j);
    return kNone;
  }

  u64 n_;
  std::vector<u64> ids_;
};

u64 typeCode(const Face& face, u64 order, QuadNodes quadNodes) {
  constexpr std::array<u64, 3> kTriangles{203, 206, 210};
  constexpr std::array<u64, 3> kQuadrilaterals{304, 309, 316};
  if (face.numCorners == 3) return kTriangles.at(order - 1);
  if (order == 2 && quadNodes == QuadNodes::EdgesOnly) return 308;
  return kQuadrilaterals.at(order - 1);
}

std::vector<double> interiorPoints(u64 numCorners, u64 order, QuadNodes quadNodes) {
  const bool isTriangle = numCorners == 3;
  if (order < (isTriangle ? 3U : 2U)) return {};
  if (!isTriangle && order == 2 && quadNodes == QuadNodes::EdgesOnly) return {};
  return topo::interiorNodePoints(
      isTriangle ? topo::ReferenceType::Triangle : topo::ReferenceType::Quadrilateral, order);
}

}  // namespace

PolygonMesh refined(const PolygonMesh& mesh, u64 n) {
  if (n == 0) throw utility::RuntimeError("A mesh needs at least one part per edge");
  PolygonMesh fine{.vertices = mesh.vertices, .faces = {}};
  fine.faces.reserve(mesh.faces.size() * n * n);
  EdgeNodes edges(fine.vertices, n);
  for (const Face& face : mesh.faces) {
    const FaceLattice id(face, n, edges, fine.vertices);
    const bool isTriangle = face.numCorners == 3;
    for (u64 j = 0; j < n; ++j) {
      for (u64 i = isTriangle ? j : 0; i < n; ++i) {
        const std::array<u64, 4> cell{id(i, j), id(i + 1, j), id(i + 1, j + 1), id(i, j + 1)};
        if (!isTriangle) {
          fine.faces.push_back({cell, 4});
          continue;
        }
        fine.faces.push_back({{cell[0], cell[1], cell[2]}, 3});
        if (i > j) fine.faces.push_back({{cell[0], cell[2], cell[3]}, 3});
      }
    }
  }
  return fine;
}

PolygonMesh triangulated(const PolygonMesh& mesh, Split which) {
  PolygonMesh result{.vertices = mesh.vertices, .faces = {}};
  u64 numQuads = 0;
  for (const Face& face : mesh.faces) {
    const bool isQuad = face.numCorners == 4;
    if (isQuad) ++numQuads;
    if (!isQuad || (which == Split::EverySecond && numQuads % 2 == 0)) {
      result.faces.push_back(face);
      continue;
    }
    const auto& c = face.corners;
    result.faces.push_back({{c[0], c[1], c[2]}, 3});
    result.faces.push_back({{c[0], c[2], c[3]}, 3});
  }
  return result;
}

SurfaceMesh withOrder(const PolygonMesh& mesh, u64 order, QuadNodes quadNodes) {
  if (order < 1 || order > 3)
    throw utility::RuntimeError(io::format("Geometric order must be 1, 2 or 3, not {}", order));
  const std::array<std::vector<double>, 2> interior{interiorPoints(3, order, quadNodes),
                                                    interiorPoints(4, order, quadNodes)};
  std::vector<Vec3> nodes = mesh.vertices;
  EdgeNodes edges(nodes, order);
  SurfaceMesh result;
  for (const Face& face : mesh.faces) {
    const u64 n = face.numCorners;
    for (u64 i = 0; i < n; ++i) result.connectivity.push_back(face.corners.at(i));
    for (u64 i = 0; i < n; ++i)
      for (u64 k = 1; k < order; ++k)
        result.connectivity.push_back(
            edges.node(face.corners.at(i), face.corners.at((i + 1) % n), k));
    const std::vector<double>& points = interior.at(n - 3);
    for (u64 i = 0; i < points.size(); i += 2) {
      result.connectivity.push_back(nodes.size());
      nodes.push_back(pointOn(face, nodes, points[i], points[i + 1]));
    }
    result.offsets.push_back(result.connectivity.size());
    result.elementTypes.push_back(typeCode(face, order, quadNodes));
  }
  result.coordinates.reserve(3 * nodes.size());
  for (const Vec3& node : nodes)
    result.coordinates.insert(result.coordinates.end(), node.begin(), node.end());
  return result;
}

}  // namespace velmo::samples
