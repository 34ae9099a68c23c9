#pragma once

#include "conf/Base.hpp"
#include "conf/FmmSettings.hpp"
#include "conf/QuadratureSettings.hpp"
#include "conf/TreeOptions.hpp"
#include "io/Types.hpp"

namespace velmo::conf {

/// Order of the surface density.
struct FEM : Base {
  u64 order = 0;
  u64 quadOrder = 0;  ///< read from a file as 0 it becomes 2 `order` + 1

  void describe(SchemaWriter& writer) const override;
};

/// Boundary integrals of the main solver; `tree` serves the evaluation too.
struct BEM : Base {
  bem::QuadratureSettings quad;
  bem::fmm::Settings fmm;
  tree::Options tree;
  bool updateInTime = true;

  void describe(SchemaWriter& writer) const override;
};

/// Boundary integrals of the evaluation at points.
struct BEMEval : Base {
  bem::EvalQuadratureSettings quad;
  bem::fmm::Settings fmm;
  tree::Options tree;  ///< only its `leafSize` is shown, in the log
  bool updateInTime = true;

  void describe(SchemaWriter& writer) const override;
};

}  // namespace velmo::conf
