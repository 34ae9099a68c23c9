#include "bem/LaplaceFundSol.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "io/Exception.hpp"
#include "math/Constants.hpp"

namespace velmo::bem {
namespace {

using math::kOneOverFourPi;
using math::kThreeOverFourPi;

struct TypeInfo {
  const char* name;
  u64 components;
};

constexpr std::array<TypeInfo, 8> kTypes{{{"Function", 1},
                                          {"GradientX", 3},
                                          {"<GradX,NX>", 3},
                                          {"GradientY", 3},
                                          {"<GradY,NY>", 3},
                                          {"HessianX", 9},
                                          {"<GradY,NY>,x", 9},
                                          {"Fun<NX,NY>", 1}}};

const TypeInfo& info(EvaluationType type) {
  const auto value = static_cast<std::int32_t>(type);
  if (value < 0 || value > 7)
    throw utility::RuntimeError("Cannot identify type of fundamental solution evaluation");
  return kTypes[static_cast<std::size_t>(value)];
}

enum PairBlock : u64 { kDistances = 0, kDifferences = 1, kNormalsX = 2, kNormalsY = 3 };

void evaluateFunction(u64 n, const double* r, double* out) {
  for (u64 k = 0; k < n; ++k) out[k] = kOneOverFourPi / r[k];
}

void evaluateGradient(u64 n, const double* r, const double* d, double* out) {
  double* const gx = out;
  double* const gy = out + n;
  double* const gz = out + 2 * n;
  for (u64 k = 0; k < n; ++k) {
    const double s = 1.0 / r[k];
    const double f = s * -kOneOverFourPi * s * s;
    gx[k] = f * d[3 * k];
    gy[k] = f * d[3 * k + 1];
    gz[k] = f * d[3 * k + 2];
  }
}

void evaluateHessian(u64 n, const double* r, const double* d, double* out) {
  for (u64 j = 0; j < 3; ++j) {
    for (u64 i = 0; i < 3; ++i) {
      double* const h = out + (i + 3 * j) * n;
      const double onDiagonal = i == j ? 1.0 : 0.0;
      for (u64 k = 0; k < n; ++k) {
        const double s = 1.0 / r[k];
        const double s3 = s * s * s;
        const double a = s3 * -kOneOverFourPi;
        const double b = s3 * (s * s) * kThreeOverFourPi;
        h[k] = b * d[3 * k + i] * d[3 * k + j] + onDiagonal * a;
      }
    }
  }
}

/// scratch[k] = factor * sum over c of components[c][k] normals[k][c]
void contract(u64 n, const double* components, const double* normals, double factor,
              double* scratch) {
  for (u64 k = 0; k < n; ++k) {
    double sum = 0.0;
    for (u64 c = 0; c < 3; ++c) sum += components[c * n + k] * normals[3 * k + c];
    scratch[k] = factor * sum;
  }
}

void evaluateType(EvaluationType type, const FundSolPairs& pairs, double* out) {
  const u64 n = pairs.numPairs;
  const double* const r = pairs.blocks.block(kDistances).data();
  const double* const d = pairs.blocks.block(kDifferences).data();
  switch (type) {
    case EvaluationType::Function:
    case EvaluationType::FunctionNormals:
      return evaluateFunction(n, r, out);
    case EvaluationType::GradientX:
    case EvaluationType::GradientXNormalX:
    case EvaluationType::GradientY:
    case EvaluationType::GradientYNormalY:
      return evaluateGradient(n, r, d, out);
    case EvaluationType::HessianX:
    case EvaluationType::GradientYNormalYThenX:
      return evaluateHessian(n, r, d, out);
  }
  throw utility::RuntimeError("Evaluation type not implemented " + name(type));
}

/// Contractions are built in the scratch array and copied back, so that no block is read after a
/// part of it has been overwritten.
void contractType(EvaluationType type, const FundSolPairs& pairs, double* out, double* scratch) {
  const u64 n = pairs.numPairs;
  const auto normals = [&](PairBlock block) { return pairs.blocks.block(block, 3 * n).data(); };
  switch (type) {
    case EvaluationType::GradientXNormalX:
      contract(n, out, normals(kNormalsX), 1.0, scratch);
      std::copy_n(scratch, n, out);
      break;
    case EvaluationType::GradientYNormalY:
      contract(n, out, normals(kNormalsY), -1.0, scratch);
      std::copy_n(scratch, n, out);
      break;
    case EvaluationType::GradientYNormalYThenX:
      // Row i of the result is column i of the Hessian, which is symmetric.
      for (u64 i = 0; i < 3; ++i)
        contract(n, out + 3 * i * n, normals(kNormalsY), -1.0, scratch + i * n);
      std::copy_n(scratch, 3 * n, out);
      break;
    case EvaluationType::FunctionNormals: {
      const double* const nx = normals(kNormalsX);
      const double* const ny = normals(kNormalsY);
      for (u64 k = 0; k < n; ++k) {
        const u64 c = 3 * k;
        out[k] *= nx[c] * ny[c] + nx[c + 1] * ny[c + 1] + nx[c + 2] * ny[c + 2];
      }
      break;
    }
    default:
      break;
  }
}

}  // namespace

std::string name(EvaluationType type) { return info(type).name; }

u64 numComponents(EvaluationType type) { return info(type).components; }

FundSolPairs::FundSolPairs(u64 capacity, bool withNormalsAtSource)
    : blocks({capacity, 3 * capacity, 0, withNormalsAtSource ? 3 * capacity : 0}) {}

FundSolValues::FundSolValues(std::vector<EvaluationType> requested, u64 capacity)
    : types(std::move(requested)) {
  if (!std::is_sorted(types.begin(), types.end()))
    throw utility::RuntimeError("Require a sorted list");
  std::vector<u64> sizes;
  for (const EvaluationType type : types) sizes.push_back(numComponents(type) * capacity);
  blocks = quad::RealBlockStore(std::move(sizes));
  scratch.resize(6 * capacity);
}

u64 FundSolValues::blockOfType(EvaluationType type) const {
  const auto found = std::lower_bound(types.begin(), types.end(), type);
  if (found == types.end() || *found != type)
    throw utility::RuntimeError("Failed to find " + name(type));
  return static_cast<u64>(found - types.begin());
}

void LaplaceFundSol<3>::preparePairs(FundSolPairs& pairs, u64 numTargets,
                                     std::span<const double> targets, u64 numSources,
                                     std::span<const double> sources,
                                     std::span<const double> normalsAtSource) {
  const u64 n = numTargets * numSources;
  double* const r = pairs.blocks.block(kDistances, n).data();
  double* const d = pairs.blocks.block(kDifferences, 3 * n).data();
  pairs.numPairs = n;
  for (u64 q = 0; q < numSources; ++q) {
    const double sx = sources[3 * q];
    const double sy = sources[3 * q + 1];
    const double sz = sources[3 * q + 2];
    double* const rq = r + q * numTargets;
    double* const dq = d + 3 * q * numTargets;
    for (u64 t = 0; t < numTargets; ++t) {
      const double dx = targets[3 * t] - sx;
      const double dy = targets[3 * t + 1] - sy;
      const double dz = targets[3 * t + 2] - sz;
      dq[3 * t] = dx;
      dq[3 * t + 1] = dy;
      dq[3 * t + 2] = dz;
      rq[t] = std::sqrt(dx * dx + dy * dy + dz * dz);
    }
  }
  if (pairs.blocks.sizes[kNormalsY] == 0) return;
  double* normals = pairs.blocks.block(kNormalsY, 3 * n).data();
  for (u64 q = 0; q < numSources; ++q)
    for (u64 t = 0; t < numTargets; ++t, normals += 3)
      std::copy_n(normalsAtSource.data() + 3 * q, 3, normals);
}

void LaplaceFundSol<3>::evaluate(const FundSolPairs& pairs, FundSolValues& values) {
  const auto output = [&](u64 i) {
    return values.blocks.block(i, numComponents(values.types[i]) * pairs.numPairs).data();
  };
  for (u64 i = 0; i < values.types.size(); ++i) evaluateType(values.types[i], pairs, output(i));
  for (u64 i = 0; i < values.types.size(); ++i)
    contractType(values.types[i], pairs, output(i), values.scratch.data());
}

}  // namespace velmo::bem
