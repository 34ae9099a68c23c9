#pragma once

#include <vector>

#include "conf/Base.hpp"
#include "conf/BoundaryConditions.hpp"
#include "conf/Discretisation.hpp"
#include "conf/Domain.hpp"
#include "conf/PostProc.hpp"
#include "conf/Solver.hpp"
#include "io/Types.hpp"

namespace velmo::conf {

/// An electrostatic problem as the main solver and the post solver share it: the node "esProblem"
/// of a settings file. What this program has no use for is carried along.
struct ESProblem : Base {
  Domain domain;
  std::vector<Dielectric> dielectrics;
  std::vector<Electrode> electrodes;
  std::vector<Floating> floatings;
  FEM fem;
  BEM bem;
  BEMEval postEval;
  PostProc postProc;
  Solver systemSolver;
  Solver postSolver;
  u64 numThreads = 1;  ///< 0 takes what the hardware has

  void describe(SchemaWriter& writer) const override;
};

}  // namespace velmo::conf
