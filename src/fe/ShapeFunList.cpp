#include "fe/ShapeFunList.hpp"

#include <cassert>
#include <stdexcept>

namespace velmo::fe {
namespace {

using topo::ReferenceType;

[[noreturn]] void failOnKind() {
  throw std::runtime_error("velmo::topo::detail_::applyToRets: must not reach this point");
}

template <class Basis>
void evaluateBasis(const Basis& basis, geom::ReferencePoints points,
                   linalg::MatrixView<double> out) {
  assert(out.rows == points.numPoints() && out.cols == basis.numFunctions());
  basis.eval(points, out.data);
}

}  // namespace

template <int N>
ShapeFunList<2, 3>::Evaluator ShapeFunList<2, 3>::BasisFunction_<N>::invoke(bool onlyShape,
                                                                            const Bases& bases) {
  static_assert(N == 2 || N == 3);
  return [onlyShape, &basis = std::get<N - 2>(bases)](geom::ReferencePoints points,
                                                      linalg::MatrixView<double> out) {
    if (!onlyShape) evaluateBasis(basis, points, out);
  };
}

ShapeFunList<2, 3>::ShapeFunList(u64 p)
    : bases_(sfun::TriangleL2Basis(p), sfun::QuadrilateralL2Basis(p)) {
  order = p;
  count[static_cast<std::size_t>(ReferenceType::Triangle)] = std::get<0>(bases_).numFunctions();
  count[static_cast<std::size_t>(ReferenceType::Quadrilateral)] =
      std::get<1>(bases_).numFunctions();
}

ShapeFunList<2, 3>::Evaluator ShapeFunList<2, 3>::evaluator(ReferenceType kind) const {
  if (kind == ReferenceType::Triangle) return BasisFunction_<2>::invoke(false, bases_);
  if (kind == ReferenceType::Quadrilateral) return BasisFunction_<3>::invoke(false, bases_);
  failOnKind();
}

void ShapeFunList<2, 3>::evaluate(ReferenceType kind, geom::ReferencePoints points,
                                  linalg::MatrixView<double> out) const {
  if (kind == ReferenceType::Triangle)
    evaluateBasis(std::get<0>(bases_), points, out);
  else if (kind == ReferenceType::Quadrilateral)
    evaluateBasis(std::get<1>(bases_), points, out);
  else
    failOnKind();
}

template struct ShapeFunList<2, 3>::BasisFunction_<2>;
template struct ShapeFunList<2, 3>::BasisFunction_<3>;

}  // namespace velmo::fe
