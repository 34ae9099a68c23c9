#include "grid/SurfaceElements.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <map>
#include <mutex>
#include <set>
#include <stdexcept>

#include "grid/ElementGeometry.hpp"
#include "grid/ElementTypes.hpp"
#include "io/Exception.hpp"
#include "quad/SurfaceRuleSet.hpp"
#include "thread/ParallelFor.hpp"

namespace velmo::grid {
namespace {

/// |(v1 - v0) x (v2 - v1)|, twice the area of the triangle.
double affineAreaElement(std::span<const double> nodes) noexcept {
  std::array<double, 3> a;
  std::array<double, 3> b;
  for (u64 axis = 0; axis < 3; ++axis) {
    a[axis] = nodes[3 + axis] - nodes[axis];
    b[axis] = nodes[6 + axis] - nodes[3 + axis];
  }
  double element = 0.0;
  areaElementsOf(a.data(), b.data(), 1, &element);
  return element;
}

/// Data that the elements of one type share: their geometric basis at the barycentre and its
/// gradients at the points of the area rule.
class TypeTable {
 public:
  explicit TypeTable(u64 code)
      : code_(code),
        shape_(referenceTypeOf(code)),
        rule_(quad::areaRules().rule(shape_, 5)),
        numNodes_(geometricBasis(code).numNodes()) {
    const sfun::NodalBasis& basis = geometricBasis(code);
    const std::array<double, 3> barycenter = topo::barycenter(shape_);
    centreValues_.resize(numNodes_);
    basis.eval({barycenter.data(), 2}, centreValues_.data());
    gradients_.resize(2 * rule_.numPoints * numNodes_);
    basis.evalGradient({rule_.points, 2 * rule_.numPoints}, gradients_.data());
    for (u64 q = 0; q < rule_.numPoints; ++q) sumOfWeights_ += rule_.weights[q];
  }

  [[nodiscard]] u64 code() const noexcept { return code_; }
  [[nodiscard]] topo::ReferenceType shape() const noexcept { return shape_; }
  [[nodiscard]] u64 numNodes() const noexcept { return numNodes_; }

  void centre(std::span<const double> nodes, double* out) const noexcept {
    nodalSum(nodes, centreValues_.data(), 1, out);
  }

  [[nodiscard]] double area(std::span<const double> nodes) const noexcept {
    // The area element of an affine triangle is the same everywhere.
    if (code_ == kAffineType) return sumOfWeights_ * affineAreaElement(nodes);
    constexpr u64 kMaxPoints = 16;
    const u64 numPoints = rule_.numPoints;
    assert(numPoints <= kMaxPoints);
    std::array<double, 3 * kMaxPoints> a;
    std::array<double, 3 * kMaxPoints> b;
    std::array<double, kMaxPoints> elements;
    nodalSum(nodes, gradients_.data(), numPoints, a.data());
    nodalSum(nodes, gradients_.data() + numPoints * numNodes_, numPoints, b.data());
    areaElementsOf(a.data(), b.data(), numPoints, elements.data());
    double sum = 0.0;
    for (u64 q = 0; q < numPoints; ++q) sum += rule_.weights[q] * elements[q];
    return sum;
  }

 private:
  u64 code_;
  topo::ReferenceType shape_;
  quad::QuadratureInterface<2> rule_;
  u64 numNodes_;
  std::vector<double> centreValues_;  ///< shape (1, numNodes)
  std::vector<double> gradients_;     ///< two blocks of shape (numPoints, numNodes), column-major
  double sumOfWeights_ = 0.0;
};

/// The tables of the types that occur, by code.
class TypeTables {
 public:
  explicit TypeTables(const std::set<u64>& codes) {
    for (const u64 code : codes) tables_.emplace(code, code);
  }
  [[nodiscard]] const TypeTable& of(u64 code) const { return tables_.find(code)->second; }

 private:
  std::map<u64, TypeTable> tables_;
};

/// Number of elements per task.
constexpr u64 kPiece = 2048;

/// Types of the elements in their new order.
/// @return the codes that occur
std::set<u64> takeTypes(const GridData& grid, std::span<const std::uint32_t> order,
                        std::vector<std::uint16_t>& types) {
  std::set<u64> codes;
  std::mutex mutex;
  thread::forPieces(types.size(), kPiece, [&](u64 first, u64 end) {
    std::set<u64> found;
    for (u64 e = first; e < end; ++e) {
      const u64 code = grid.elementTypes[order.empty() ? e : order[e]];
      types[e] = static_cast<std::uint16_t>(code);
      if (e > first && types[e] == types[e - 1]) continue;
      if (dimensionOf(code) != 2)
        throw utility::RuntimeError("surfaceElements: a " + nameOf(code) + " is no surface");
      found.insert(code);
    }
    const std::lock_guard lock(mutex);
    codes.merge(found);
  });
  return codes;
}

void requireFit(const GridData& grid, std::span<const std::uint32_t> order) {
  const bool fits = grid.elementTypes.size() >= grid.numElements && grid.worldDim >= 3 &&
                    grid.coordinates.size() / grid.worldDim >= grid.nodeIds.size() &&
                    (order.empty() || order.size() == grid.numElements);
  if (!fits) throw utility::RuntimeError("surfaceElements: the lists don't fit together");
}

}  // namespace

std::vector<topo::ReferenceType> SurfaceElements::codeShapes() const {
  std::vector<topo::ReferenceType> result;
  for (const u64 code : codes) result.push_back(referenceTypeOf(code));
  return result;
}

void SurfaceElements::positionsFromValues(u64 e, std::span<const double> values, double* x,
                                          double* y, double* z) const noexcept {
  nodalRows(nodes(e), values.data(), values.size() / numNodes(e), x, y, z);
}

SurfaceElements surfaceElements(const GridData& grid, std::span<const std::uint32_t> order) {
  requireFit(grid, order);
  const u64 numElements = grid.numElements;
  (void)ElementInfo(std::span(grid.elementTypes).first(numElements)).order();
  SurfaceElements elements;
  elements.types.resize(numElements);
  const std::set<u64> codes = takeTypes(grid, order, elements.types);
  elements.codes.assign(codes.begin(), codes.end());
  const TypeTables tables(codes);

  elements.nodeOffsets.resize(numElements + 1);
  const TypeTable* table = nullptr;
  for (u64 e = 0; e < numElements; ++e) {
    if (table == nullptr || table->code() != elements.types[e])
      table = &tables.of(elements.types[e]);
    elements.nodeOffsets[e + 1] = elements.nodeOffsets[e] + table->numNodes();
  }
  elements.shapes.resize(numElements);
  elements.coordinates.resize(3 * elements.nodeOffsets.back());
  elements.sizes.resize(numElements);
  elements.centres.resize(3 * numElements);
  thread::forPieces(numElements, kPiece, [&](u64 first, u64 end) {
    const TypeTable* type = nullptr;
    for (u64 e = first; e < end; ++e) {
      if (type == nullptr || type->code() != elements.types[e])
        type = &tables.of(elements.types[e]);
      const u64 from = order.empty() ? e : order[e];
      double* out = elements.coordinates.data() + 3 * elements.nodeOffsets[e];
      for (const u64 id : elementRun(grid.connectivity, grid.offsets, from, type->numNodes())) {
        const u64 position = nodePosition(grid.nodeIds, id);
        if (position == kNone) throw std::out_of_range("invalid unordered_map<K, T> key");
        out = std::copy_n(grid.coordinates.data() + grid.worldDim * position, 3, out);
      }
      elements.shapes[e] = type->shape();
      elements.sizes[e] = std::sqrt(2.0 * type->area(elements.nodes(e)));
      type->centre(elements.nodes(e), elements.centres.data() + 3 * e);
    }
  });
  return elements;
}

}  // namespace velmo::grid
