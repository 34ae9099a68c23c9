#pragma once

#include <cstdint>

#include "conf/ESProblem.hpp"

namespace orvanta {

/// The few settings from which a run without settings file is described.
struct DefaultParameters {
  std::int64_t leafSize = 500;  ///< objects that a leaf of the octree may hold
  std::int64_t fmmDegree = 8;   ///< degree of the expansions
  std::int64_t quadOrder = 5;   ///< order of the main solver's quadrature
  std::int64_t maxIter = 100;   ///< iteration limit and restart of the system solver
  double rtol = 1e-4;           ///< relative tolerance of the system solver
  bool linearElements = false;  ///< order of the density: 1 when true, 0 when false
  std::int64_t numThreads = 0;  ///< 0 takes what the hardware has
};

/// Writes the parameters to `problem`, which is fresh from its constructor. The block `postEval`
/// keeps its own defaults.
///
/// @throws velmo::utility::RuntimeError "The FMM expansion degree must be >= 3"
void applyParameters(const DefaultParameters& parameters, velmo::conf::ESProblem& problem);

}  // namespace orvanta
