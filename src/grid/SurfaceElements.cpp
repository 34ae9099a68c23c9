#include "grid/SurfaceElements.hpp"

#include <array>
#include <cassert>
#include <cmath>
#include <deque>

#include "grid/ElementGeometry.hpp"
#include "grid/ElementTypes.hpp"
#include "io/Exception.hpp"
#include "quad/SurfaceRuleSet.hpp"

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

/// What the elements of one type share: their geometric basis at the barycentre and its gradients
/// at the points of the area rule.
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

/// The tables of the few types that occur, each built at its first element.
class TypeTables {
 public:
  const TypeTable& of(u64 code) {
    if (last_ != nullptr && last_->code() == code) return *last_;
    for (const TypeTable& table : tables_)
      if (table.code() == code) return *(last_ = &table);
    return *(last_ = &tables_.emplace_back(code));
  }

 private:
  std::deque<TypeTable> tables_;  // references stay valid while it grows
  const TypeTable* last_ = nullptr;
};

void requireEqualElements(bool equal) {
  if (!equal)
    throw utility::RuntimeError("surfaceElements: topology and geometry have different elements");
}

}  // namespace

void SurfaceElements::positionsFromValues(u64 e, std::span<const double> values,
                                          double* out) const noexcept {
  nodalSum(nodes(e), values.data(), values.size() / numNodes(e), out);
}

SurfaceElements surfaceElements(const topo::Grid<2>& topology, const Geometry::Grid& geometry) {
  const u64 numElements = topology.numElements();
  requireEqualElements(geometry.numElements() == numElements);
  TypeTables tables;
  SurfaceElements elements;
  elements.types = geometry.elementTypes;
  elements.shapes.resize(numElements);
  elements.nodeOffsets.resize(numElements + 1);
  for (u64 e = 0; e < numElements; ++e) {
    const TypeTable& table = tables.of(elements.types[e]);
    requireEqualElements(table.shape() == topology.elementType(e));
    elements.shapes[e] = table.shape();
    elements.nodeOffsets[e + 1] = elements.nodeOffsets[e] + table.numNodes();
  }

  elements.coordinates.resize(3 * elements.nodeOffsets.back());
  elements.areas.resize(numElements);
  elements.sizes.resize(numElements);
  elements.centres.resize(3 * numElements);
  for (u64 e = 0; e < numElements; ++e) {
    const TypeTable& table = tables.of(elements.types[e]);
    geometry.collectNodes(topology.elementVertices(e), e,
                          elements.coordinates.data() + 3 * elements.nodeOffsets[e]);
    elements.areas[e] = table.area(elements.nodes(e));
    elements.sizes[e] = std::sqrt(2.0 * elements.areas[e]);
    table.centre(elements.nodes(e), elements.centres.data() + 3 * e);
  }
  return elements;
}

}  // namespace velmo::grid
