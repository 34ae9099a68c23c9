#pragma once

#include <cstdint>
#include <limits>

/// Records that the settings tree shares with the octree, the near field and the far field. They
/// include the standard library only, so that those folders need no YAML. Each is in the namespace
/// of the folder that reads it.

namespace velmo::tree {

/// When the octree stops refining: keys of "tree". The program uses those of `bem.tree`; of
/// `postEval.tree` it only shows `leafSize` in the log.
///
/// In a file "adaptive" is required, and so is the one of the other two that it selects. The
/// missing one is read as `leafSize` 0 or `maxLevel` "none".
struct Options {
  /// "leafSize", number of objects, that is elements and points together, that a leaf may hold.
  /// Used if `adaptive`. Any value; with few objects per leaf most of the time goes into
  /// translations of expansions, with many into direct sums.
  std::uint64_t leafSize = 100;
  /// "maxLevel", level of all leaves, the root being level 0; identifiers end at level 21. Used if
  /// not `adaptive`. The default stands for "none".
  std::uint64_t maxLevel = std::numeric_limits<std::uint64_t>::max();
  /// "adaptive", whether a leaf is an orthant with few objects or one of a given level.
  bool adaptive = true;

  bool operator==(const Options&) const = default;
};

}  // namespace velmo::tree

namespace velmo::bem {

/// Quadrature of the main solver: keys of `bem.quad`, all required. Carried, not read here.
struct QuadratureSettings {
  std::uint64_t regular = 5;        ///< "regular", order of the regular rule
  std::uint64_t quasiOrder = 5;     ///< "quasiOrder", order of the quasi-singular rule
  std::uint64_t quasiMaxLevel = 3;  ///< "quasiMaxLevel", its largest recursion level
  double quasiAdm = 1.0;            ///< "quasiAdm", its admissibility
  std::uint64_t singularXi = 8;     ///< "singularXi", order of the singular rule in xi
  std::uint64_t singularEta = 8;    ///< "singularEta", the same in eta

  bool operator==(const QuadratureSettings&) const = default;
};

/// Quadrature of the near field: keys of `postEval.quad`, all required.
struct EvalQuadratureSettings {
  /// "order", polynomial degree that the rule on an element and on each of its cells integrates
  /// exactly, 1 to 100; the near field refuses others.
  std::uint64_t order = 5;
  /// "minRelDist", distance in element sizes, sqrt(2 area), from the image of an element's
  /// barycentre below which a target gets a rule that is subdivided towards it. Any number; usual
  /// values are 0.5 to 4. It is also the ratio of distance to cell size at which subdivision ends.
  double minRelDist = 1.0;
  /// "maxLevel", shown in the log only: the subdivision always ends at level 5.
  std::uint64_t maxLevel = 5;

  bool operator==(const EvalQuadratureSettings&) const = default;
};

}  // namespace velmo::bem

namespace velmo::bem::fmm {

/// Far field: keys of "fmm", both required. The program uses those of `postEval.fmm`; `bem.fmm` is
/// for the main solver, and only its degree is checked.
struct Settings {
  /// "leafQuadratureOrder", degree that the rule of the source moments integrates exactly, 1 to
  /// 100; others are refused. 0 in a file becomes `degree` + 3. On flat triangles a moment's
  /// integrand has the degree `degree` plus the order of the density.
  std::uint64_t leafQuadratureOrder = 8;
  /// "degree", largest degree p of the expansions, 3 to 80: (p + 1)(p + 2) / 2 coefficients per
  /// box. Less than 3 is refused when the file is read, more than 80 when the far field is built.
  std::uint64_t degree = 5;

  bool operator==(const Settings&) const = default;
};

}  // namespace velmo::bem::fmm
