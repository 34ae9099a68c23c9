#include "sfun/NodalBasis.hpp"

#include <stdexcept>
#include <string>

#include "io/Exception.hpp"
#include "linalg/Factorisations.hpp"
#include "sfun/HierarchicalBasisFunction.hpp"
#include "sfun/PointBatch.hpp"

namespace velmo::sfun {
namespace {

template <int D>
class LagrangeBasis final : public NodalBasis {
 public:
  explicit LagrangeBasis(u64 order) : functions_(order) {}

  [[nodiscard]] u64 numNodes() const noexcept override { return functions_.numFunctions(); }
  void eval(geom::ReferencePoints points, double* values) const override {
    functions_.eval(points, values);
  }
  void evalGradient(geom::ReferencePoints points, double* gradients) const override {
    functions_.evalGradient(points, gradients);
  }

 private:
  HierarchicalBasisFunction<D, Nodal::NodalLegendreGenerator> functions_;
};

template <int D, u64 Order>
const NodalBasis& instance() {
  static const LagrangeBasis<D> basis(Order);
  return basis;
}

template <int D>
const NodalBasis& basisOfOrder(u64 order) {
  switch (order) {
    case 1:
      return instance<D, 1>();
    case 2:
      return instance<D, 2>();
    case 3:
      return instance<D, 3>();
    default:
      throw utility::RuntimeError("No nodal basis of order " + std::to_string(order));
  }
}

using detail_::PointBatch;
using detail_::Rows;

constexpr u64 kNumMonomials = MonomialBasis::kNumNodes;
using MonomialRow = std::array<double, kNumMonomials>;

/// Exponents (a, b) of each monomial.
constexpr std::array<std::array<u64, 2>, kNumMonomials> kExponents{
    {{0, 0}, {0, 1}, {0, 2}, {1, 0}, {1, 1}, {1, 2}, {2, 0}, {2, 1}}};

MonomialRow monomials(double x, double y) noexcept {
  const std::array<double, 3> px{1.0, x, x * x};
  const std::array<double, 3> py{1.0, y, y * y};
  MonomialRow row{};
  for (u64 m = 0; m < kNumMonomials; ++m) row[m] = px[kExponents[m][0]] * py[kExponents[m][1]];
  return row;
}

MonomialRow monomialsDx(double x, double y) noexcept {
  const std::array<double, 3> dx{0.0, 1.0, 2.0 * x};
  const std::array<double, 3> py{1.0, y, y * y};
  MonomialRow row{};
  for (u64 m = 0; m < kNumMonomials; ++m) row[m] = dx[kExponents[m][0]] * py[kExponents[m][1]];
  return row;
}

MonomialRow monomialsDy(double x, double y) noexcept {
  const std::array<double, 3> px{1.0, x, x * x};
  const std::array<double, 3> dy{0.0, 1.0, 2.0 * y};
  MonomialRow row{};
  for (u64 m = 0; m < kNumMonomials; ++m) row[m] = px[kExponents[m][0]] * dy[kExponents[m][1]];
  return row;
}

/// out_k(q) = sum over m of C(k, m) f_m(point q), with C column-major.
template <class Monomials>
void combine(const double* coefficients, const Monomials& f, const PointBatch& batch, Rows out) {
  std::array<math::BatchRow, kNumMonomials> rows;
  for (u64 q = 0; q < batch.count; ++q) {
    const MonomialRow values = f(batch.x.values[q], batch.y.values[q]);
    for (u64 m = 0; m < kNumMonomials; ++m) rows[m].values[q] = values[m];
  }
  for (u64 k = 0; k < kNumMonomials; ++k) {
    double* __restrict row = out[k];
    std::fill_n(row, batch.count, 0.0);
    for (u64 m = 0; m < kNumMonomials; ++m) {
      const double c = coefficients[m * kNumMonomials + k];
      const double* __restrict source = rows[m].data();
      for (u64 q = 0; q < batch.count; ++q) row[q] += c * source[q];
    }
  }
}

}  // namespace

const NodalBasis& lagrangeBasis(topo::ReferenceType kind, u64 order) {
  switch (kind) {
    case topo::ReferenceType::Triangle:
      return basisOfOrder<2>(order);
    case topo::ReferenceType::Quadrilateral:
      return basisOfOrder<3>(order);
    default:
      throw std::runtime_error("velmo::topo::detail_::applyToRets: must not reach this point");
  }
}

MonomialBasis::MonomialBasis(std::span<const double> nodes) {
  const u64 count = nodes.size() / 2;
  if (count != kNumMonomials)
    throw std::runtime_error("Failed to construct right number of monomials: " +
                             std::to_string(kNumMonomials) + " != " + std::to_string(count));
  // Column k contains the monomials at node k, so row k of the inverse contains the factors of the
  // function that is 1 at node k and 0 at the others.
  for (u64 k = 0; k < kNumMonomials; ++k) {
    const MonomialRow values = monomials(nodes[2 * k], nodes[2 * k + 1]);
    std::copy_n(values.data(), kNumMonomials, coefficients_.data() + k * kNumMonomials);
  }
  linalg::invert(linalg::MatrixView<double>(coefficients_.data(), kNumMonomials, kNumMonomials));
}

void MonomialBasis::eval(geom::ReferencePoints points, double* values) const {
  detail_::forEachBatch(points, [&](const PointBatch& batch, u64 first) {
    combine(coefficients_.data(), monomials, batch, {values + first, points.numPoints()});
  });
}

void MonomialBasis::evalGradient(geom::ReferencePoints points, double* gradients) const {
  const u64 stride = points.numPoints();
  double* gradientsY = gradients + kNumNodes * stride;
  detail_::forEachBatch(points, [&](const PointBatch& batch, u64 first) {
    combine(coefficients_.data(), monomialsDx, batch, {gradients + first, stride});
    combine(coefficients_.data(), monomialsDy, batch, {gradientsY + first, stride});
  });
}

const NodalBasis& serendipityBasis() {
  static const MonomialBasis basis = [] {
    const topo::NodePoints nodes = topo::nodePoints(topo::ReferenceType::Quadrilateral, 2);
    // All nodes of order 2 except the last one, the centre.
    return MonomialBasis(std::span(nodes.points).first(2 * MonomialBasis::kNumNodes));
  }();
  return basis;
}

}  // namespace velmo::sfun
