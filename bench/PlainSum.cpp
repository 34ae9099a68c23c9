#include "PlainSum.hpp"

#include "math/InstructionSet.hpp"

namespace velmo::bench {
namespace {

using bem::PointCharges;
using bem::PotentialAndGradient;
using bem::TargetLanes;

/// Targets whose coordinates and sums stay in the first cache while all charges pass.
constexpr u64 kBlock = 256;

[[gnu::always_inline]] inline void addBlock(const PointCharges& charges, const TargetLanes& targets,
                                            u64 first, u64 count) {
  const double* const x = targets.x + first;
  const double* const y = targets.y + first;
  const double* const z = targets.z + first;
  double* const potential = targets.potential + first;
  double* const gradientX = targets.gradientX + first;
  double* const gradientY = targets.gradientY + first;
  double* const gradientZ = targets.gradientZ + first;
  for (u64 q = 0; q < charges.count; ++q) {
    const double sx = charges.x[q];
    const double sy = charges.y[q];
    const double sz = charges.z[q];
    const double forPotential = charges.forPotential[q];
    const double forGradient = charges.forGradient[q];
#pragma omp simd
    for (u64 t = 0; t < count; ++t) {
      const double dx = x[t] - sx;
      const double dy = y[t] - sy;
      const double dz = z[t] - sz;
      const double s = 1.0 / __builtin_sqrt(dx * dx + dy * dy + dz * dz);
      const double w = forGradient * s * (s * s);
      potential[t] += forPotential * s;
      gradientX[t] -= w * dx;
      gradientY[t] -= w * dy;
      gradientZ[t] -= w * dz;
    }
  }
}

[[gnu::always_inline]] inline void addAll(const PointCharges& charges, const TargetLanes& targets) {
  for (u64 first = 0; first < targets.count; first += kBlock)
    addBlock(charges, targets, first,
             targets.count - first < kBlock ? targets.count - first : kBlock);
}

[[gnu::always_inline]] inline PotentialAndGradient sumAt(const PointCharges& charges,
                                                         const double* point) {
  // Copies: members that are read in the loop make the compiler gather.
  const auto [x, y, z, forPotential, forGradient, count] = charges;
  const double tx = point[0];
  const double ty = point[1];
  const double tz = point[2];
  double potential = 0.0;
  double gradientX = 0.0;
  double gradientY = 0.0;
  double gradientZ = 0.0;
#pragma omp simd reduction(+ : potential, gradientX, gradientY, gradientZ)
  for (u64 q = 0; q < count; ++q) {
    const double dx = tx - x[q];
    const double dy = ty - y[q];
    const double dz = tz - z[q];
    const double s = 1.0 / __builtin_sqrt(dx * dx + dy * dy + dz * dz);
    const double w = forGradient[q] * s * (s * s);
    potential += forPotential[q] * s;
    gradientX -= w * dx;
    gradientY -= w * dy;
    gradientZ -= w * dz;
  }
  return {potential, {gradientX, gradientY, gradientZ}};
}

[[gnu::target("arch=x86-64-v4,prefer-vector-width=512")]] void addAllAvx512(
    const PointCharges& charges, const TargetLanes& targets) {
  addAll(charges, targets);
}

[[gnu::target("arch=x86-64-v3")]] void addAllAvx2(const PointCharges& charges,
                                                  const TargetLanes& targets) {
  addAll(charges, targets);
}

[[gnu::target("arch=x86-64-v4,prefer-vector-width=512")]] PotentialAndGradient sumAtAvx512(
    const PointCharges& charges, const double* point) {
  return sumAt(charges, point);
}

[[gnu::target("arch=x86-64-v3")]] PotentialAndGradient sumAtAvx2(const PointCharges& charges,
                                                                 const double* point) {
  return sumAt(charges, point);
}

}  // namespace

void plainSum(const PointCharges& charges, const TargetLanes& targets) {
  switch (math::instructionSet()) {
    case math::InstructionSet::Avx512:
      return addAllAvx512(charges, targets);
    case math::InstructionSet::Avx2:
      return addAllAvx2(charges, targets);
    case math::InstructionSet::Baseline:
      break;
  }
  addAll(charges, targets);
}

PotentialAndGradient plainSumAt(const PointCharges& charges, const double* point) {
  switch (math::instructionSet()) {
    case math::InstructionSet::Avx512:
      return sumAtAvx512(charges, point);
    case math::InstructionSet::Avx2:
      return sumAtAvx2(charges, point);
    case math::InstructionSet::Baseline:
      break;
  }
  return sumAt(charges, point);
}

}  // namespace velmo::bench
