#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "conf/Base.hpp"
#include "conf/Domain.hpp"
#include "conf/MethodSettings.hpp"
#include "conf/PostProc.hpp"
#include "io/Exception.hpp"
#include "io/Types.hpp"

/// The root of the settings tree with the blocks of physics and method.
namespace velmo::conf {

/// A dielectric body: an entry of "dielectrics". Carried.
struct Dielectric : Base {
  u64 partId = 0;  ///< "partId", required: `Part::id` of the body
  /// "orientations", required: of the part's surfaces, -1, 0 or 1 each; others are refused.
  std::vector<std::int64_t> orientations;
  double epsR = 0.0;  ///< "epsR", required: relative permittivity, a pure number

  void describe(SchemaWriter& writer) const override;
};

/// A conductor at a fixed voltage: an entry of "electrodes". Carried.
struct Electrode : Base {
  u64 partId = 0;        ///< "partId", required
  double voltage = 0.0;  ///< "voltage", required, in the main solver's unit of the potential

  void describe(SchemaWriter& writer) const override;
};

/// A conductor of unknown potential: an entry of "floatings". Carried.
struct Floating : Base {
  u64 partId = 0;       ///< "partId", required
  double charge = 0.0;  ///< "charge", required: its total charge, in the main solver's unit

  void describe(SchemaWriter& writer) const override;
};

/// Order of the surface density: the block "fem".
struct FEM : Base {
  /// "order", required: polynomial order of the density on an element, 0 or more. The evaluation
  /// refuses a value that differs from the order in the solution file.
  u64 order = 0;
  /// "quadOrder", required: order of the main solver's rule. Carried; 0 in a file becomes
  /// 2 `order` + 1.
  u64 quadOrder = 0;

  void describe(SchemaWriter& writer) const override;
};

/// Boundary integrals of the main solver: the block "bem". The evaluation uses `tree` too, because
/// its results have to agree with those of the main solver; the others are carried.
struct BEM : Base {
  bem::QuadratureSettings quad;  ///< "quad", required
  bem::fmm::Settings fmm;        ///< "fmm", required
  tree::Options tree;            ///< "tree", required: the octree of this program
  bool updateInTime = true;      ///< "updateInTime", optional

  void describe(SchemaWriter& writer) const override;
};

/// Boundary integrals of the evaluation at points: the block "postEval".
struct BEMEval : Base {
  bem::EvalQuadratureSettings quad;  ///< "quad", required: the near field of this program
  bem::fmm::Settings fmm;            ///< "fmm", required: the far field of this program
  tree::Options tree;                ///< "tree", required; only its `leafSize` is shown, in the log
  bool updateInTime = true;          ///< "updateInTime", optional; carried

  void describe(SchemaWriter& writer) const override;
};

/// Solvers of linear systems, in the order in which a form lists them.
enum class SolverType { kUmfpack, kCholmod, kCg, kGmres, kMinres, kBiCgStab, kBoomerAmg };

/// The texts of the enumerators, in their order.
inline constexpr std::array<std::string_view, 7> kSolverTypeNames{
    "UMFPACK", "CHOLMOD", "CG", "GMRES", "MINRES", "BICGStab", "BoomerAMG"};

/// The text of a solver type in the settings file.
/// @throws utility::RuntimeError "Cannot identify solver type" outside the enumeration
[[nodiscard]] inline std::string_view toText(SolverType type) {
  const auto index = static_cast<std::size_t>(type);
  if (index >= kSolverTypeNames.size()) throw utility::RuntimeError("Cannot identify solver type");
  return kSolverTypeNames[index];
}

/// A solver of linear systems: the blocks "systemSolver" and "postSolver". Carried.
struct Solver : Base {
  /// "type", required. Any text is accepted; forms offer those of `SolverType`.
  std::string type{toText(SolverType::kGmres)};
  double rtol = 1e-5;    ///< "rtol", required: residual relative to the right-hand side
  double atol = 1e-20;   ///< "atol", required: residual, absolute
  u64 maxIter = 100;     ///< "maxIter", required: iterations
  bool verbose = false;  ///< "verbose", optional
  u64 restart = 100;     ///< "restart", optional: iterations until GMRES starts anew

  void describe(SchemaWriter& writer) const override;
};

/// An electrostatic problem as the main solver and this program share it: the node "esProblem" of a
/// settings file. All keys are required; lists may be empty.
struct ESProblem : Base {
  Domain domain;                        ///< "domain"
  std::vector<Dielectric> dielectrics;  ///< "dielectrics"
  std::vector<Electrode> electrodes;    ///< "electrodes"
  std::vector<Floating> floatings;      ///< "floatings"
  FEM fem;                              ///< "fem"
  BEM bem;                              ///< "bem"
  BEMEval postEval;                     ///< "postEval"
  PostProc postProc;                    ///< "postProc"
  Solver systemSolver;                  ///< "systemSolver"
  Solver postSolver;                    ///< "postSolver"
  /// "numThreads", worker threads of the process, 0 to 1024; 0 means one per processor that the
  /// process may use. More than 1024 are refused when the run applies the setting.
  u64 numThreads = 1;

  void describe(SchemaWriter& writer) const override;
};

}  // namespace velmo::conf
