#include "quad/CellMap.hpp"

#include <cmath>

#include "io/Exception.hpp"

namespace velmo::quad {
namespace {

CellMap scaled(double factor, double tx, double ty) {
  return {.a00 = factor, .a10 = 0.0, .a01 = 0.0, .a11 = factor, .tx = tx, .ty = ty};
}

CellMap quadrilateralMap(CellCode code) {
  const u64 level = cellLevel(code);
  u64 i = 0;
  u64 j = 0;
  for (u64 l = 0; l < level; ++l) {
    i |= ((code >> (2 * l)) & 1U) << l;
    j |= ((code >> (2 * l + 1)) & 1U) << l;
  }
  const double s = std::ldexp(1.0, -static_cast<int>(level));
  return scaled(s, static_cast<double>(i) * s, static_cast<double>(j) * s);
}

/// `factor` of a map is the signed scale of its cell: the inverted middle triangle has a minus
/// sign.
CellMap triangleMap(CellCode code) {
  CellMap map;
  for (u64 l = cellLevel(code); l-- > 0;) {
    const double half = 0.5 * map.a00;
    switch ((code >> (2 * l)) & 3U) {
      case 0:
        map = scaled(half, map.tx, map.ty);
        break;
      case 1:
        map = scaled(half, map.tx + half, map.ty);
        break;
      case 2:
        map = scaled(-half, map.tx + 2.0 * half, map.ty + half);
        break;
      default:
        map = scaled(half, map.tx + half, map.ty + half);
        break;
    }
  }
  return map;
}

}  // namespace

CellMap cellMap(topo::ReferenceType kind, CellCode code) {
  if (kind == topo::ReferenceType::Triangle) return triangleMap(code);
  if (kind == topo::ReferenceType::Quadrilateral) return quadrilateralMap(code);
  throw utility::RuntimeError("Reference element is not a surface element");
}

}  // namespace velmo::quad
