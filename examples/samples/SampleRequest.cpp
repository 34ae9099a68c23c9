#include "samples/SampleRequest.hpp"

#include "io/Exception.hpp"
#include "io/Format.hpp"

namespace velmo::samples {

namespace {

/// An option that also chooses the kind of octree.
Reader octree(SampleRequest& r, bool adaptive, const Reader& read) {
  return [&r, adaptive, read](std::string_view text) {
    r.settings.tree.adaptive = adaptive;
    return read(text);
  };
}

void addBodyOptions(std::vector<Option>& options, SampleRequest& r) {
  options.insert(
      options.end(),
      {{"--body", "sphere|box|plate|ellipsoid|sphere-pair|disc-pair",
        "shape of the surface (sphere)",
        choice<Body>(r.body, {{"sphere", Body::Sphere},
                              {"box", Body::Box},
                              {"plate", Body::Plate},
                              {"ellipsoid", Body::Ellipsoid},
                              {"sphere-pair", Body::SpherePair},
                              {"disc-pair", Body::DiscPair}})},
       {"--elements", "triangles|quads|mixed", "kinds of elements (triangles)",
        choice<Elements>(r.mesh.elements, {{"triangles", Elements::Triangles},
                                           {"quads", Elements::Quadrilaterals},
                                           {"mixed", Elements::Mixed}})},
       {"--refine", "N", "parts of each edge of the coarse body, 1 to 2000 (8)",
        inRange(r.mesh.refine, 1, 2000)},
       {"--geometry-order", "1|2|3", "order of the elements' geometry (1)",
        inRange(r.mesh.geometryOrder, 1, 3)},
       {"--quad8", "", "eight-node quadrilaterals at geometry order 2",
        flag(r.mesh.eightNodeQuads)},
       {"--radius", "X", "radius of the sphere, the upper sphere, the discs (1)",
        positive(r.radius)},
       {"--lower-radius", "X", "radius of the lower sphere of a pair (as the upper)",
        positive(r.lowerRadius)},
       {"--gap", "X", "between the surfaces of a pair (0.5)", positive(r.gap)},
       {"--semi-axes", "X,Y,Z", "half-axes of the ellipsoid (1,0.8,0.6)", vector(r.semiAxes)},
       {"--size", "X,Y,Z", "edges of the box; X is the edge of the plate (1,1,1)", vector(r.size)},
       {"--centre", "X,Y,Z", "centre of the body (0,0,0)", vector(r.centre)},
       {"--renumber", "", "number nodes and elements in random order", flag(r.renumber)}});
}

void addDensityOptions(std::vector<Option>& options, SampleRequest& r) {
  options.insert(
      options.end(),
      {{"--density-order", "0|1|2|3", "order of the density (0)",
        inRange(r.settings.femOrder, 0, 3)},
       {"--density", "uniform|linear|exact",
        "sigma everywhere, sigma times z - z of the centre, or the closed form: conducting\n"
        "                                   ellipsoid of a charge (1), conducting spheres at "
        "+-voltage,\n"
        "                                   discs with +-sigma, even sphere (uniform)",
        choice<DensityKind>(r.densityKind, {{"uniform", DensityKind::Uniform},
                                            {"linear", DensityKind::Linear},
                                            {"exact", DensityKind::Exact}})},
       {"--voltage", "X", "potential of the upper sphere of a pair (1)", number(r.voltage)},
       {"--sigma", "X", "charge per unit of area (1)", number(r.sigma)},
       {"--charge", "X",
        "scale the density to this total charge; of an exact ellipsoid, 1 (as sigma gives it)",
        number(r.charge)}});
}

void addFileOptions(std::vector<Option>& options, SampleRequest& r) {
  options.insert(options.end(),
                 {{"--pieces", "N", "pieces with ghosts in the solution file (1)",
                   inRange(r.pieces.numPieces, 1)},
                  {"--shuffle", "", "random order inside the pieces", flag(r.pieces.shuffle)},
                  {"--gzip", "", "compress the datasets", flag(r.storage.gzip)},
                  {"--integers", "64|32|mixed", "stored width of integers (64)",
                   choice<IntegerWidth>(r.storage.integers, {{"64", IntegerWidth::Bits64},
                                                             {"32", IntegerWidth::Bits32},
                                                             {"mixed", IntegerWidth::Mixed}})},
                  {"--strings", "fixed|variable", "form of string attributes (fixed)",
                   choice<TextForm>(r.storage.strings, {{"fixed", TextForm::Fixed},
                                                        {"variable", TextForm::Variable}})}});
}

void addPointOptions(std::vector<Option>& options, SampleRequest& r) {
  options.insert(
      options.end(),
      {{"--points", "shell|fibonacci|line|plane|box|surface|near",
        "random or lattice in a shell, line, square grid, random in a box, on "
        "elements, near them (shell)",
        choice<PointSet>(r.points, {{"shell", PointSet::Shell},
                                    {"fibonacci", PointSet::Fibonacci},
                                    {"line", PointSet::Line},
                                    {"plane", PointSet::Plane},
                                    {"box", PointSet::Box},
                                    {"surface", PointSet::Surface},
                                    {"near", PointSet::Near}})},
       {"--count", "N", "points; a plane takes the largest square below (1000)",
        inRange(r.count, 1, 1000000000)},
       {"--rmin", "X",
        "inner radius of the shell around the centre, or least element sizes of near (1.5)",
        number(r.rMin)},
       {"--rmax", "X", "outer radius of the shell, or most element sizes of near (3)",
        number(r.rMax)},
       {"--from", "X,Y,Z", "start of the line, corner of the box or of the plane (-2,-2,1.5)",
        vector(r.from)},
       {"--to", "X,Y,Z",
        "end of the line, opposite corner; a plane shares one coordinate (2,2,1.5)",
        vector(r.to)}});
}

void addSettingsOptions(std::vector<Option>& options, SampleRequest& r) {
  options.insert(options.end(),
                 {{"--degree", "N", "degree of the expansions, at least 3 (5)",
                   inRange(r.settings.fmm.degree, 3)},
                  {"--leaf-order", "N", "order of the rule for the moments, 0: degree + 3 (8)",
                   inRange(r.settings.fmm.leafQuadratureOrder, 0)},
                  {"--near-order", "N", "order of the near-field rule, at least 1 (5)",
                   inRange(r.settings.quad.order, 1)},
                  {"--min-rel-dist", "X", "distance in element sizes that counts as near (1)",
                   positive(r.settings.quad.minRelDist)},
                  {"--leaf-size", "N", "adaptive octree with so many objects in a leaf (100)",
                   octree(r, true, inRange(r.settings.tree.leafSize, 1, kNone))},
                  {"--max-level", "N", "uniform octree of so many levels, 0 to 21 (adaptive)",
                   octree(r, false, inRange(r.settings.tree.maxLevel, 0, 21))},
                  {"--threads", "N", "worker threads, 0: one per processor (0)",
                   inRange(r.settings.numThreads, 0)},
                  {"--seed", "N", "of all random numbers (1)", inRange(r.seed, 0)},
                  {"--out", "DIR/NAME", "writes NAME.vtkhdf, NAME.xyz and NAME.yaml (required)",
                   [&r](std::string_view text) {
                     r.out = text;
                     return r.out.has_filename();
                   }}});
}

/// All options in the order of the help; they store into `request`.
std::vector<Option> sampleOptions(SampleRequest& request) {
  std::vector<Option> options;
  addBodyOptions(options, request);
  addDensityOptions(options, request);
  addFileOptions(options, request);
  addPointOptions(options, request);
  addSettingsOptions(options, request);
  return options;
}

}  // namespace

std::filesystem::path SampleRequest::file(const char* extension) const {
  return std::filesystem::path(out) += extension;
}

std::array<double, 2> SampleRequest::radii() const {
  return {radius, lowerRadius.value_or(radius)};
}

SampleRequest parseRequest(Words words) {
  SampleRequest request;
  readOptions(sampleOptions(request), words);
  if (request.out.empty()) throw utility::RuntimeError("'--out' is required");
  request.pieces.seed = request.seed;
  return request;
}

std::string requestHelp() {
  std::string text =
      "make_sample --out=DIR/NAME [options]\n"
      "Writes a solution file, evaluation points and settings for orvanta.post.\n\n"
      "Options, with defaults in parentheses:\n";
  SampleRequest request;
  for (const Option& option : sampleOptions(request)) {
    const std::string name = option.name + (option.values.empty() ? "" : "=" + option.values);
    text += name.size() < 32 ? io::format("  {:<32} {}\n", name, option.help)
                             : io::format("  {}\n  {:<32} {}\n", name, "", option.help);
  }
  return text + io::format("  {:<32} {}\n", "--help", "this text");
}

}  // namespace velmo::samples
