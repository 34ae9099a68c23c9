#include "samples/Pieces.hpp"

#include <algorithm>
#include <array>
#include <numeric>

#include "grid/ElementTypes.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "samples/Random.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::samples {

namespace {

constexpr std::int64_t kOwned = 0;
constexpr std::int64_t kGhost = 1;

/// One entity of a piece.
struct Member {
  u64 id;
  std::int64_t ghost;
};

u64 longestAxis(const SurfaceMesh& mesh) {
  std::array<double, 3> extent{};
  for (u64 axis = 0; axis < 3; ++axis) {
    double low = mesh.coordinates.at(axis);
    double high = low;
    for (u64 i = axis; i < mesh.coordinates.size(); i += 3) {
      low = std::min(low, mesh.coordinates[i]);
      high = std::max(high, mesh.coordinates[i]);
    }
    extent.at(axis) = high - low;
  }
  return static_cast<u64>(std::max_element(extent.begin(), extent.end()) - extent.begin());
}

/// The piece of each element.
std::vector<u64> ownersOfElements(const SurfaceMesh& mesh, u64 numPieces) {
  const u64 axis = longestAxis(mesh);
  const u64 n = mesh.numElements();
  std::vector<double> place(n, 0.0);
  for (u64 e = 0; e < n; ++e) {
    for (const u64 node : mesh.vertices(e)) place[e] += mesh.coordinates[3 * node + axis];
    place[e] /= static_cast<double>(mesh.vertices(e).size());
  }
  std::vector<u64> order(n);
  std::iota(order.begin(), order.end(), u64{0});
  std::stable_sort(order.begin(), order.end(), [&](u64 a, u64 b) { return place[a] < place[b]; });
  std::vector<u64> owner(n);
  for (u64 i = 0; i < n; ++i) owner[order[i]] = i * numPieces / n;
  return owner;
}

/// Fills the arrays piece by piece.
class Cutter {
 public:
  Cutter(const SurfaceMesh& mesh, const Density& density, const PieceOptions& options)
      : mesh_(mesh),
        density_(density),
        shuffle_(options.shuffle),
        random_(options.seed),
        elementOwner_(ownersOfElements(mesh, options.numPieces)),
        nodeOwner_(mesh.numNodes(), kNone),
        localNode_(mesh.numNodes(), kNone) {
    for (u64 e = 0; e < mesh.numElements(); ++e)
      for (const u64 node : mesh.nodes(e))
        nodeOwner_[node] = std::min(nodeOwner_[node], elementOwner_[e]);
    file_.ints("FEOrder") = {static_cast<std::int64_t>(density.order)};
  }

  void addPiece(u64 piece) {
    const std::vector<Member> cells = cellsOf(piece);
    addPoints(piece, cells);
    addCells(cells);
    addDofs(cells);
  }

  SolutionFile take() { return std::move(file_); }

 private:
  std::vector<Member> inOrder(std::vector<Member> members) {
    // Owned before ghosts, ids ascending, is what a solver writes; random order must not matter.
    std::stable_sort(members.begin(), members.end(),
                     [](const Member& a, const Member& b) { return a.ghost < b.ghost; });
    if (!shuffle_) return members;
    std::vector<Member> mixed;
    mixed.reserve(members.size());
    for (const u64 i : random_.permutation(members.size())) mixed.push_back(members[i]);
    return mixed;
  }

  /// The elements of the piece and those of others that touch one of its nodes.
  std::vector<Member> cellsOf(u64 piece) {
    std::vector<bool> isTouched(mesh_.numNodes(), false);
    for (u64 e = 0; e < mesh_.numElements(); ++e)
      if (elementOwner_[e] == piece)
        for (const u64 node : mesh_.nodes(e)) isTouched[node] = true;
    std::vector<Member> cells;
    for (u64 e = 0; e < mesh_.numElements(); ++e) {
      const auto nodes = mesh_.nodes(e);
      if (std::any_of(nodes.begin(), nodes.end(), [&](u64 node) { return isTouched[node]; }))
        cells.push_back({e, elementOwner_[e] == piece ? kOwned : kGhost});
    }
    return inOrder(std::move(cells));
  }

  void addPoints(u64 piece, const std::vector<Member>& cells) {
    std::vector<u64> nodes;
    for (const Member& cell : cells)
      nodes.insert(nodes.end(), mesh_.nodes(cell.id).begin(), mesh_.nodes(cell.id).end());
    std::sort(nodes.begin(), nodes.end());
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
    std::vector<Member> members;
    members.reserve(nodes.size());
    for (const u64 node : nodes)
      members.push_back({node, nodeOwner_[node] == piece ? kOwned : kGhost});

    members = inOrder(std::move(members));

    Doubles& points = file_.doubles("Points");
    Ints& ghosts = file_.ints("PointData/vtkGhostType");
    Ints& ids = file_.ints("PointData/vtkGlobalIds");
    for (u64 i = 0; i < members.size(); ++i) {
      const double* const x = mesh_.coordinates.data() + 3 * members[i].id;
      points.insert(points.end(), x, x + 3);
      ghosts.push_back(members[i].ghost);
      ids.push_back(static_cast<std::int64_t>(members[i].id));
      localNode_[members[i].id] = i;
    }
    file_.ints("NumberOfPoints").push_back(static_cast<std::int64_t>(members.size()));
  }

  void addCells(const std::vector<Member>& cells) {
    constexpr std::int64_t kLagrangeTriangle = 69;
    constexpr std::int64_t kLagrangeQuadrilateral = 70;
    Ints& types = file_.ints("Types");
    Ints& connectivity = file_.ints("Connectivity");
    Ints& offsets = file_.ints("Offsets");
    Ints& ghosts = file_.ints("CellData/vtkGhostType");
    Ints& ids = file_.ints("CellData/vtkGlobalIds");
    std::int64_t numIds = 0;
    offsets.push_back(0);
    for (const Member& cell : cells) {
      const bool isTriangle =
          grid::referenceTypeOf(mesh_.elementTypes[cell.id]) == topo::ReferenceType::Triangle;
      types.push_back(isTriangle ? kLagrangeTriangle : kLagrangeQuadrilateral);
      ghosts.push_back(cell.ghost);
      ids.push_back(static_cast<std::int64_t>(cell.id));
      for (const u64 node : mesh_.nodes(cell.id)) {
        connectivity.push_back(static_cast<std::int64_t>(localNode_[node]));
        ++numIds;
      }
      offsets.push_back(numIds);
    }
    file_.ints("NumberOfCells").push_back(static_cast<std::int64_t>(cells.size()));
    file_.ints("NumberOfConnectivityIds").push_back(numIds);
  }

  void addDofs(const std::vector<Member>& cells) {
    std::vector<Member> dofs;
    for (const Member& cell : cells)
      for (u64 dof = density_.offsets[cell.id]; dof < density_.offsets[cell.id + 1]; ++dof)
        dofs.push_back({dof, cell.ghost});

    dofs = inOrder(std::move(dofs));

    Ints& ids = file_.ints("GlobalDofIds");
    Ints& ghosts = file_.ints("GhostDofs");
    Doubles& charges = file_.doubles("charges");
    for (const Member& dof : dofs) {
      ids.push_back(static_cast<std::int64_t>(dof.id));
      ghosts.push_back(dof.ghost);
      charges.push_back(density_.charges[dof.id]);
    }
    file_.ints("NumberOfDofIds").push_back(static_cast<std::int64_t>(dofs.size()));
  }

  const SurfaceMesh& mesh_;
  const Density& density_;
  bool shuffle_;
  Random random_;
  std::vector<u64> elementOwner_;
  std::vector<u64> nodeOwner_;
  std::vector<u64> localNode_;  ///< position of a node in the current piece
  SolutionFile file_;
};

}  // namespace

SolutionFile pieces(const SurfaceMesh& mesh, const Density& density, const PieceOptions& options) {
  if (density.numElements() != mesh.numElements())
    throw utility::RuntimeError("Density and mesh have different numbers of elements");
  if (options.numPieces == 0 || options.numPieces > mesh.numElements())
    throw utility::RuntimeError(
        io::format("Cannot cut {} elements into {} pieces", mesh.numElements(), options.numPieces));
  Cutter cutter(mesh, density, options);
  for (u64 piece = 0; piece < options.numPieces; ++piece) cutter.addPiece(piece);
  return cutter.take();
}

}  // namespace velmo::samples
