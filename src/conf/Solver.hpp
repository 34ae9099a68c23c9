#pragma once

#include <array>
#include <string>
#include <string_view>

#include "conf/Base.hpp"
#include "io/Types.hpp"

namespace velmo::conf {

/// Solvers of linear systems, in the order in which a form lists them.
enum class SolverType { kUmfpack, kCholmod, kCg, kGmres, kMinres, kBiCgStab, kBoomerAmg };

/// The texts of the enumerators, in their order.
inline constexpr std::array<std::string_view, 7> kSolverTypeNames{
    "UMFPACK", "CHOLMOD", "CG", "GMRES", "MINRES", "BICGStab", "BoomerAMG"};

/// The text of a solver type in the settings file.
/// @throws velmo::utility::RuntimeError "Cannot identify solver type" outside the enumeration
[[nodiscard]] std::string_view toText(SolverType type);

/// An iterative solver of the main program; carried, not used here.
struct Solver : Base {
  std::string type{
      toText(SolverType::kGmres)};  ///< any text is read; the form offers those of `SolverType`
  double rtol = 1e-5;
  double atol = 1e-20;
  u64 maxIter = 100;
  bool verbose = false;
  u64 restart = 100;

  void describe(SchemaWriter& writer) const override;
};

}  // namespace velmo::conf
