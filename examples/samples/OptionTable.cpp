#include "samples/OptionTable.hpp"

#include <charconv>
#include <cmath>
#include <type_traits>
#include <utility>

namespace velmo::samples {

namespace {

/// The words of an option with what they stand for.
template <class T>
using Words = std::vector<std::pair<std::string_view, T>>;

template <class T>
bool parseNumber(std::string_view text, T& value) {
  T parsed{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
  if (error != std::errc() || end != text.data() + text.size()) return false;
  if constexpr (std::is_floating_point_v<T>) {
    if (!std::isfinite(parsed)) return false;
  }
  value = parsed;
  return true;
}

bool parseVector(std::string_view text, Vec3& value) {
  Vec3 parsed{};
  for (u64 axis = 0; axis < 3; ++axis) {
    const auto end = axis < 2 ? text.find(',') : text.size();
    if (end == std::string_view::npos || !parseNumber(text.substr(0, end), parsed.at(axis)))
      return false;
    if (axis < 2) text.remove_prefix(end + 1);
  }
  value = parsed;
  return true;
}

/// A member of the request, reached by a function so that nested members need no special case.
template <class Access>
auto number(Access access) {
  return [access](SampleRequest& request, std::string_view text) {
    return parseNumber(text, access(request));
  };
}

/// A number of the range [low, high].
template <class Access>
auto inRange(Access access, u64 low, u64 high = kNone - 1) {
  return [access, low, high](SampleRequest& request, std::string_view text) {
    u64 value = 0;
    if (!parseNumber(text, value) || value < low || value > high) return false;
    access(request) = value;
    return true;
  };
}

template <class Access>
auto positive(Access access) {
  return [access](SampleRequest& request, std::string_view text) {
    double value = 0.0;
    if (!parseNumber(text, value) || !(value > 0.0)) return false;
    access(request) = value;
    return true;
  };
}

template <class Access>
auto vector(Access access) {
  return [access](SampleRequest& request, std::string_view text) {
    return parseVector(text, access(request));
  };
}

template <class Access, class Value>
auto choice(Access access, Words<Value> words) {
  return [access, words = std::move(words)](SampleRequest& request, std::string_view text) {
    for (const auto& [word, value] : words) {
      if (word != text) continue;
      access(request) = value;
      return true;
    }
    return false;
  };
}

template <class Access>
auto flag(Access access) {
  return [access](SampleRequest& request, std::string_view) {
    access(request) = true;
    return true;
  };
}

using R = SampleRequest;

void addBodyOptions(std::vector<Option>& options) {
  options.push_back({"body", "sphere|box|plate|ellipsoid|sphere-pair|disc-pair",
                     "shape of the surface (sphere)",
                     choice(
                         [](R & r) -> auto& { return r.body; },
                         Words<Body>{{"sphere", Body::Sphere},
                                     {"box", Body::Box},
                                     {"plate", Body::Plate},
                                     {"ellipsoid", Body::Ellipsoid},
                                     {"sphere-pair", Body::SpherePair},
                                     {"disc-pair", Body::DiscPair}})});
  options.push_back({"elements", "triangles|quads|mixed", "kinds of elements (triangles)",
                     choice(
                         [](R & r) -> auto& { return r.mesh.elements; },
                         Words<Elements>{{"triangles", Elements::Triangles},
                                         {"quads", Elements::Quadrilaterals},
                                         {"mixed", Elements::Mixed}})});
  options.push_back({"refine", "N", "parts of each edge of the coarse body, 1 to 2000 (8)",
                     inRange(
                         [](R & r) -> auto& { return r.mesh.refine; }, 1, 2000)});
  options.push_back({"geometry-order", "1|2|3", "order of the elements' geometry (1)",
                     inRange(
                         [](R & r) -> auto& { return r.mesh.geometryOrder; }, 1, 3)});
  options.push_back({"quad8", "", "eight-node quadrilaterals at geometry order 2",
                     flag([](R & r) -> auto& { return r.mesh.eightNodeQuads; })});
  options.push_back({"radius", "X", "radius of the sphere, the upper sphere, the discs (1)",
                     positive([](R & r) -> auto& { return r.radius; })});
  options.push_back({"lower-radius", "X", "radius of the lower sphere of a pair (as the upper)",
                     positive([](R & r) -> auto& { return r.lowerRadius.emplace(); })});
  options.push_back({"gap", "X", "between the surfaces of a pair (0.5)",
                     positive([](R & r) -> auto& { return r.gap; })});
  options.push_back({"semi-axes", "X,Y,Z", "half-axes of the ellipsoid (1,0.8,0.6)",
                     vector([](R & r) -> auto& { return r.semiAxes; })});
  options.push_back({"size", "X,Y,Z", "edges of the box; X is the edge of the plate (1,1,1)",
                     vector([](R & r) -> auto& { return r.size; })});
  options.push_back({"centre", "X,Y,Z", "centre of the body (0,0,0)",
                     vector([](R & r) -> auto& { return r.centre; })});
  options.push_back({"renumber", "", "number nodes and elements in random order",
                     flag([](R & r) -> auto& { return r.renumber; })});
}

void addDensityOptions(std::vector<Option>& options) {
  options.push_back({"density-order", "0|1|2|3", "order of the density (0)",
                     inRange(
                         [](R & r) -> auto& { return r.settings.femOrder; }, 0, 3)});
  options.push_back(
      {"density", "uniform|linear|exact",
       "sigma everywhere, sigma times z - z of the centre, or the closed form: conducting\n"
       "                                   ellipsoid of a charge (1), conducting spheres at "
       "+-voltage,\n"
       "                                   discs with +-sigma, even sphere (uniform)",
       choice(
           [](R & r) -> auto& { return r.densityKind; },
           Words<DensityKind>{{"uniform", DensityKind::Uniform},
                              {"linear", DensityKind::Linear},
                              {"exact", DensityKind::Exact}})});
  options.push_back({"voltage", "X", "potential of the upper sphere of a pair (1)",
                     number([](R & r) -> auto& { return r.voltage; })});
  options.push_back({"sigma", "X", "charge per unit of area (1)",
                     number([](R & r) -> auto& { return r.sigma; })});
  options.push_back(
      {"charge", "X",
       "scale the density to this total charge; of an exact ellipsoid, 1 (as sigma gives it)",
       [](R& r, std::string_view text) { return parseNumber(text, r.charge.emplace()); }});
}

void addFileOptions(std::vector<Option>& options) {
  options.push_back({"pieces", "N", "pieces with ghosts in the solution file (1)",
                     inRange(
                         [](R & r) -> auto& { return r.pieces.numPieces; }, 1)});
  options.push_back({"shuffle", "", "random order inside the pieces",
                     flag([](R & r) -> auto& { return r.pieces.shuffle; })});
  options.push_back(
      {"gzip", "", "compress the datasets", flag([](R & r) -> auto& { return r.storage.gzip; })});
  options.push_back({"integers", "64|32|mixed", "stored width of integers (64)",
                     choice(
                         [](R & r) -> auto& { return r.storage.integers; },
                         Words<IntegerWidth>{{"64", IntegerWidth::Bits64},
                                             {"32", IntegerWidth::Bits32},
                                             {"mixed", IntegerWidth::Mixed}})});
  options.push_back(
      {"strings", "fixed|variable", "form of string attributes (fixed)",
       choice(
           [](R & r) -> auto& { return r.storage.strings; },
           Words<TextForm>{{"fixed", TextForm::Fixed}, {"variable", TextForm::Variable}})});
}

void addPointOptions(std::vector<Option>& options) {
  options.push_back({"points", "shell|fibonacci|line|plane|box|surface|near",
                     "random or lattice in a shell, line, square grid, random in a box, on "
                     "elements, near them (shell)",
                     choice(
                         [](R & r) -> auto& { return r.points; },
                         Words<PointSet>{{"shell", PointSet::Shell},
                                         {"fibonacci", PointSet::Fibonacci},
                                         {"line", PointSet::Line},
                                         {"plane", PointSet::Plane},
                                         {"box", PointSet::Box},
                                         {"surface", PointSet::Surface},
                                         {"near", PointSet::Near}})});
  options.push_back({"count", "N", "points; a plane takes the largest square below (1000)",
                     inRange(
                         [](R & r) -> auto& { return r.count; }, 1, 1000000000)});
  options.push_back(
      {"rmin", "X",
       "inner radius of the shell around the centre, or least element sizes of near (1.5)",
       number([](R & r) -> auto& { return r.rMin; })});
  options.push_back({"rmax", "X", "outer radius of the shell, or most element sizes of near (3)",
                     number([](R & r) -> auto& { return r.rMax; })});
  options.push_back({"from", "X,Y,Z",
                     "start of the line, corner of the box or of the plane (-2,-2,1.5)",
                     vector([](R & r) -> auto& { return r.from; })});
  options.push_back({"to", "X,Y,Z",
                     "end of the line, opposite corner; a plane shares one coordinate (2,2,1.5)",
                     vector([](R & r) -> auto& { return r.to; })});
}

void addSettingsOptions(std::vector<Option>& options) {
  options.push_back({"degree", "N", "degree of the expansions, at least 3 (5)",
                     inRange(
                         [](R & r) -> auto& { return r.settings.fmm.degree; }, 3)});
  options.push_back({"leaf-order", "N", "order of the rule for the moments, 0: degree + 3 (8)",
                     inRange(
                         [](R & r) -> auto& { return r.settings.fmm.leafQuadratureOrder; }, 0)});
  options.push_back({"near-order", "N", "order of the near-field rule, at least 1 (5)",
                     inRange(
                         [](R & r) -> auto& { return r.settings.quad.order; }, 1)});
  options.push_back({"min-rel-dist", "X", "distance in element sizes that counts as near (1)",
                     positive([](R & r) -> auto& { return r.settings.quad.minRelDist; })});
  options.push_back({"leaf-size", "N", "adaptive octree with so many objects in a leaf (100)",
                     [](R& r, std::string_view text) {
                       r.settings.tree.adaptive = true;
                       return parseNumber(text, r.settings.tree.leafSize) &&
                              r.settings.tree.leafSize > 0;
                     }});
  options.push_back({"max-level", "N", "uniform octree of so many levels, 0 to 21 (adaptive)",
                     [](R& r, std::string_view text) {
                       r.settings.tree.adaptive = false;
                       return parseNumber(text, r.settings.tree.maxLevel) &&
                              r.settings.tree.maxLevel <= 21;
                     }});
  options.push_back({"threads", "N", "worker threads, 0: one per processor (0)",
                     inRange(
                         [](R & r) -> auto& { return r.settings.numThreads; }, 0)});
  options.push_back({"seed", "N", "of all random numbers (1)",
                     inRange(
                         [](R & r) -> auto& { return r.seed; }, 0)});
  options.push_back({"out", "DIR/NAME", "writes NAME.vtkhdf, NAME.xyz and NAME.yaml (required)",
                     [](R& r, std::string_view text) {
                       r.out = text;
                       return r.out.has_filename();
                     }});
}

}  // namespace

const std::vector<Option>& optionTable() {
  static const std::vector<Option> table = [] {
    std::vector<Option> options;
    addBodyOptions(options);
    addDensityOptions(options);
    addFileOptions(options);
    addPointOptions(options);
    addSettingsOptions(options);
    return options;
  }();
  return table;
}

}  // namespace velmo::samples
