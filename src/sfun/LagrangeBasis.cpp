#include <stdexcept>
#include <string>

#include "io/Exception.hpp"
#include "sfun/HierarchicalBasisFunction.hpp"
#include "sfun/NodalBasis.hpp"

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

}  // namespace velmo::sfun
