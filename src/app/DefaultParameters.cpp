#include "app/DefaultParameters.hpp"

#include <algorithm>

#include "io/Exception.hpp"
#include "io/Types.hpp"

namespace orvanta {

using velmo::kNone;
using velmo::u64;

namespace {

velmo::bem::QuadratureSettings quadratureOfOrder(std::int64_t order) {
  velmo::bem::QuadratureSettings quad;
  quad.regular = static_cast<u64>(order);
  quad.quasiOrder = static_cast<u64>(order);
  quad.quasiMaxLevel = 3;
  quad.quasiAdm = 1.0;
  quad.singularXi = static_cast<u64>(order >= -1 && order <= 4 ? 5 : order + 1);
  quad.singularEta = static_cast<u64>(std::max<std::int64_t>(order + 1, 5) + 1);
  return quad;
}

}  // namespace

void applyParameters(const DefaultParameters& parameters, velmo::conf::ESProblem& problem) {
  const u64 quadBase = parameters.linearElements ? 3 : 5;
  problem.fem.order = parameters.linearElements ? 1 : 0;
  problem.fem.quadOrder = quadBase;

  problem.bem.quad = quadratureOfOrder(parameters.quadOrder);
  if (parameters.fmmDegree < 3)
    throw velmo::utility::RuntimeError("The FMM expansion degree must be >= 3");
  problem.bem.fmm.degree = static_cast<u64>(parameters.fmmDegree);
  problem.bem.fmm.leafQuadratureOrder = problem.bem.fmm.degree + quadBase;
  problem.bem.tree.leafSize = static_cast<u64>(parameters.leafSize);
  problem.bem.tree.maxLevel = kNone;
  problem.bem.tree.adaptive = true;

  problem.systemSolver.type = "GMRES";
  problem.systemSolver.rtol = parameters.rtol;
  problem.systemSolver.maxIter = static_cast<u64>(parameters.maxIter);
  problem.systemSolver.restart = static_cast<u64>(parameters.maxIter);
  problem.systemSolver.verbose = true;

  problem.postSolver.type = "CG";
  problem.postSolver.rtol = 1e-8;
  problem.postSolver.maxIter = 100;
  problem.postSolver.restart = 100;
  problem.postSolver.verbose = true;

  problem.postProc.vtk = false;
  problem.postProc.vtkhdf.active = true;
  problem.postProc.vtkhdf.isChecksum = true;

  problem.numThreads = static_cast<u64>(parameters.numThreads);
}

}  // namespace orvanta
