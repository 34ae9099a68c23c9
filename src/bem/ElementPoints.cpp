#include "bem/ElementPoints.hpp"

#include <algorithm>
#include <array>

#include "grid/ElementGeometry.hpp"
#include "grid/ElementTypes.hpp"
#include "thread/ParallelFor.hpp"

namespace velmo::bem {
namespace {

/// Charges at `kCount` points from `q` on; few enough that the sums stay in registers.
template <u64 kCount>
void sumBlock(const linalg::MatrixView<const double>& phi, u64 q, const double* coefficients,
              double* charges) noexcept {
  std::array<double, kCount> sums{};
  const double* column = phi.data + q;
  for (u64 i = 0; i < phi.cols; ++i, column += phi.rows)
    for (u64 k = 0; k < kCount; ++k) sums[k] += coefficients[i] * column[k];
  std::copy_n(sums.data(), kCount, charges);
}

}  // namespace

ElementRule::ElementRule(const grid::SurfaceElements& elements, const quad::SurfaceRuleSet& rules)
    : elements_(&elements) {
  for (const u64 code : elements.codes) {
    const auto rule = rules.rule(grid::referenceTypeOf(code));
    const sfun::NodalBasis& basis = grid::geometricBasis(code);
    TypeTable table{code, rule.numPoints, std::vector<double>(rule.numPoints * basis.numNodes())};
    basis.eval({rule.points, 2 * rule.numPoints}, table.basis.data());
    tables_.push_back(std::move(table));
  }
}

const ElementRule::TypeTable& ElementRule::tableOf(u64 element) const noexcept {
  const TypeTable* table = tables_.data();
  while (table->code != elements_->types[element]) ++table;
  return *table;
}

u64 ElementRule::numPoints(u64 first, u64 end) const noexcept {
  if (tables_.size() == 1) return tables_.front().numPoints * (end - first);
  u64 count = 0;
  for (u64 e = first; e < end; ++e) count += tableOf(e).numPoints;
  return count;
}

void ElementRule::place(u64 first, u64 end, double* x, double* y, double* z) const noexcept {
  for (u64 e = first, q = 0; e < end; ++e) {
    const TypeTable& table = tableOf(e);
    elements_->positionsFromValues(e, table.basis, x + q, y + q, z + q);
    q += table.numPoints;
  }
}

ElementPoints::ElementPoints(const grid::SurfaceElements& elements,
                             const quad::SurfaceRuleSet& rules,
                             std::span<const std::uint8_t> used) {
  const ElementRule rule(elements, rules);
  const u64 numElements = elements.numElements();
  offsets.resize(numElements + 1, 0);
  for (u64 e = 0; e < numElements; ++e) offsets[e + 1] = offsets[e] + rule.numPoints(e, e + 1);
  for (io::UnfilledVector<double>* const row : {&x, &y, &z}) row->resize(offsets.back());
  constexpr u64 kPiece = 1024;
  thread::forPieces(numElements, kPiece, [&](u64 first, u64 end) {
    forEachUsedRun(used, first, end, [&](u64 begin, u64 behind) {
      const u64 q = offsets[begin];
      rule.place(begin, behind, x.data() + q, y.data() + q, z.data() + q);
    });
  });
}

std::vector<u64> dofOffsets(const grid::SurfaceElements& elements,
                            const fe::ShapeFunList<2, 3>& shapes) {
  std::vector<u64> offsets(elements.numElements() + 1, 0);
  for (u64 e = 0; e < elements.numElements(); ++e)
    offsets[e + 1] = offsets[e] + shapes.count[static_cast<std::size_t>(elements.shapes[e])];
  return offsets;
}

WeightedShapes weightedShapes(const fe::ShapeCache& cache, u64 order,
                              const grid::SurfaceElements& elements) {
  using topo::ReferenceType;
  const std::vector<ReferenceType> used = elements.codeShapes();
  const auto matrixOf = [&](ReferenceType shape) {
    return std::ranges::find(used, shape) == used.end()
               ? linalg::MatrixView<const double>()
               : cache.matrix(order, fe::BasisKind::L2, shape);
  };
  return {matrixOf(ReferenceType::Triangle), matrixOf(ReferenceType::Quadrilateral)};
}

void chargesAtPoints(const grid::SurfaceElements& elements, WeightedShapes shapes, u64 first,
                     u64 end, const double* coefficients, double* charges) noexcept {
  for (u64 e = first; e < end; ++e) {
    const linalg::MatrixView<const double>& phi = shapes.of(elements.shapes[e]);
    u64 q = 0;
    for (; q + 8 <= phi.rows; q += 8) sumBlock<8>(phi, q, coefficients, charges + q);
    for (; q < phi.rows; ++q) sumBlock<1>(phi, q, coefficients, charges + q);
    charges += phi.rows;
    coefficients += phi.cols;
  }
}

}  // namespace velmo::bem
