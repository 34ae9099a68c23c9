#pragma once

#include <string_view>
#include <tuple>
#include <type_traits>

#include "conf/ESProblem.hpp"
#include "conf/Field.hpp"

/// The one description of the settings tree. Decoder, encoder and schema walk these tables, so that
/// a key, its position and its texts are defined in one place.
namespace velmo::conf {

template <>
struct Fields<Base> {
  static constexpr std::string_view section = "base";
  static constexpr std::tuple list{optional(&Base::comment, "base.comment")};
};

template <>
struct Fields<Part> {
  static constexpr std::string_view section = "part";
  static constexpr std::tuple list{
      required(&Part::name, "part.name"), required(&Part::id, "part.id"),
      optional(&Part::regionIds, "part.regionIds", {.title = "Region IDs", .minItems = 1})};
};

template <>
struct Fields<Domain> {
  static constexpr std::string_view section = "domain";
  static constexpr std::tuple list{
      required(&Domain::parts, "domain.parts", {.title = "Parts"}),
      optional(&Domain::placements, "domain.placements", {.title = "Placements"})};
};

// The keys of placements have no section: their failures are reported under the key of the whole
// list.
template <>
struct Fields<GridTransformBase> {
  static constexpr std::string_view section = "";
  static constexpr std::tuple list{
      required(&GridTransformBase::partIDs, "partIDs", {.minItems = 1}),
      optional(&GridTransformBase::position, "position", {.title = "Apply position"}),
      optional(&GridTransformBase::timeId, "timeId", {.title = "ID of time function"}),
      required(&GridTransformBase::type, "type", {.isConstant = true})};
};

template <>
struct Fields<GridScaling> {
  static constexpr std::string_view section = "";
  static constexpr std::string_view definition = "gridScaling";
  static constexpr std::string_view title = "Scaling";
  static constexpr std::tuple list{
      required(&GridScaling::factors, "factors", {.title = "Scaling factors"}),
      required(&GridScaling::center, "center", {.title = "Center"})};
};

template <>
struct Fields<GridTranslation> {
  static constexpr std::string_view section = "";
  static constexpr std::string_view definition = "gridTranslation";
  static constexpr std::string_view title = "Translation";
  static constexpr std::tuple list{
      required(&GridTranslation::shifts, "shifts", {.title = "Shifts"})};
};

template <>
struct Fields<GridRotation> {
  static constexpr std::string_view section = "";
  static constexpr std::string_view definition = "gridRotation";
  static constexpr std::string_view title = "Rotation";
  static constexpr std::tuple list{
      required(&GridRotation::axis, "axis"),
      required(&GridRotation::center, "center", {.title = "Center"}),
      required(&GridRotation::angle, "angle", {.title = "Angle in degrees"})};
};

template <>
struct Fields<GridAffine> {
  static constexpr std::string_view section = "";
  static constexpr std::string_view definition = "gridAffine";
  static constexpr std::string_view title = "Affine";
  static constexpr std::tuple list{
      required(&GridAffine::A, "A", {.title = "Column-major matrix coefficients"}),
      required(&GridAffine::b, "b", {.title = "Shift vector"})};
};

/// The placements that a file can contain, in the order in which their `type` is tested.
using PlacementKinds =
    std::tuple<std::type_identity<GridScaling>, std::type_identity<GridTranslation>,
               std::type_identity<GridRotation>, std::type_identity<GridAffine>>;

/// Calls `visit(std::type_identity<Kind>)` for the kind whose text is `type`; false if there is
/// none.
template <class Visitor>
[[nodiscard]] bool visitPlacementKind(std::string_view type, Visitor&& visit) {
  const auto tryKind = [&]<class Kind>(std::type_identity<Kind> kind) {
    if (type != Kind::kType) return false;
    visit(kind);
    return true;
  };
  return std::apply([&](auto... kinds) { return (tryKind(kinds) || ...); }, PlacementKinds{});
}

template <>
struct Fields<Dielectric> {
  static constexpr std::string_view section = "diel";
  static constexpr std::tuple list{
      required(&Dielectric::partId, "diel.partId", {.title = "ID of part"}),
      required(&Dielectric::orientations, "diel.orientations",
               {.title = "Surface orientations",
                .description = "Only needed for pure BEM analysis",
                .uniqueItems = false,
                .flowStyle = true}),
      required(&Dielectric::epsR, "diel.epsR", {.title = "Rel. permittivity"})};
};

template <>
struct Fields<Electrode> {
  static constexpr std::string_view section = "elec";
  static constexpr std::tuple list{
      required(&Electrode::partId, "elec.partId", {.title = "ID of part"}),
      required(&Electrode::voltage, "elec.voltage", {.title = "Voltage"})};
};

template <>
struct Fields<Floating> {
  static constexpr std::string_view section = "flot";
  static constexpr std::tuple list{
      required(&Floating::partId, "flot.partId", {.title = "ID of part"}),
      required(&Floating::charge, "flot.charge", {.title = "Charge"})};
};

template <>
struct Fields<FEM> {
  static constexpr std::string_view section = "fem";
  static constexpr std::tuple list{
      required(&FEM::order, "fem.order", {.title = "Approx. order"}),
      required(&FEM::quadOrder, "fem.quadOrder", {.title = "Quadrature order"})};
};

template <>
struct Fields<bem::QuadratureSettings> {
  using Settings = bem::QuadratureSettings;
  static constexpr std::string_view section = "";
  static constexpr std::tuple list{
      required(&Settings::regular, "regular", {.title = "Regular quadrature order"}),
      required(&Settings::quasiOrder, "quasiOrder", {.title = "Quasi-singular quadrature order"}),
      required(&Settings::quasiMaxLevel, "quasiMaxLevel",
               {.title = "Quasi-singular maximal recursion level"}),
      required(&Settings::quasiAdm, "quasiAdm", {.title = "Quasi-singular admissibility"}),
      required(&Settings::singularXi, "singularXi", {.title = "Singular quadrature order (xi)"}),
      required(&Settings::singularEta, "singularEta",
               {.title = "Singular quadrature order (eta)"})};
};

template <>
struct Fields<bem::EvalQuadratureSettings> {
  using Settings = bem::EvalQuadratureSettings;
  static constexpr std::string_view section = "";
  static constexpr std::tuple list{
      required(&Settings::order, "order", {.title = "Quadrature order for evaluation"}),
      // Existing forms use a key for this field that differs from the one in files, and this title.
      required(&Settings::minRelDist, "minRelDist",
               {.title = "Minimal distance for regulare integration", .schemaKey = "minimalDist"}),
      required(&Settings::maxLevel, "maxLevel", {.title = "Maximal recursion level"})};
};

template <>
struct Fields<bem::fmm::Settings> {
  using Settings = bem::fmm::Settings;
  static constexpr std::string_view section = "";
  static constexpr std::tuple list{
      required(&Settings::leafQuadratureOrder, "leafQuadratureOrder",
               {.title = "Leaf quadrature order"}),
      required(&Settings::degree, "degree", {.title = "Expansion degree"})};
};

// Which of the first two a file must have depends on the third.
template <>
struct Fields<tree::Options> {
  static constexpr std::string_view section = "opts";
  static constexpr std::tuple list{
      optional(&tree::Options::leafSize, "opts.leafSize", {.title = "Leaf size"}),
      optional(&tree::Options::maxLevel, "opts.maxLevel", {.title = "Max tree level"}),
      required(&tree::Options::adaptive, "opts.adaptive")};
};

inline constexpr FieldForm kQuadForm{.title = "Quadrature settings"};
inline constexpr FieldForm kFmmForm{.title = "FMM settings"};
inline constexpr FieldForm kTreeForm{.title = "Tree settings"};
inline constexpr FieldForm kUpdateForm{.title = "Update in time",
                                       .description = "Only needed for time-domain analysis"};

template <>
struct Fields<BEM> {
  static constexpr std::string_view section = "bem";
  static constexpr std::tuple list{required(&BEM::quad, "bem.quad", kQuadForm),
                                   required(&BEM::fmm, "bem.fmm", kFmmForm),
                                   required(&BEM::tree, "bem.tree", kTreeForm),
                                   optional(&BEM::updateInTime, "bem.updateInTime", kUpdateForm)};
};

template <>
struct Fields<BEMEval> {
  static constexpr std::string_view section = "be";
  static constexpr std::tuple list{
      required(&BEMEval::quad, "be.quad", kQuadForm), required(&BEMEval::fmm, "be.fmm", kFmmForm),
      required(&BEMEval::tree, "be.tree", kTreeForm),
      optional(&BEMEval::updateInTime, "be.updateInTime", kUpdateForm)};
};

template <>
struct Fields<MatOut> {
  static constexpr std::string_view section = "matOut";
  static constexpr std::tuple list{
      required(&MatOut::active, "matOut.active", {.title = "Active"}),
      optional(&MatOut::timeSteps, "matOut.timeSteps", {.title = "Time steps"}),
      optional(&MatOut::onException, "matOut.onException", {.title = "Upon exception"})};
};

template <>
struct Fields<VTKHDF> {
  static constexpr std::string_view section = "vtkhdf";
  static constexpr std::tuple list{
      required(&VTKHDF::active, "vtkhdf.active", {.title = "Active"}),
      optional(&VTKHDF::isSinglePrec, "vtkhdf.isSinglePrec", {.title = "Single precision"}),
      optional(&VTKHDF::isGZip, "vtkhdf.isGZip"), optional(&VTKHDF::isSZip, "vtkhdf.isSZip"),
      optional(&VTKHDF::isChecksum, "vtkhdf.isChecksum")};
};

template <>
struct Fields<InteriorSurface> {
  static constexpr std::string_view section = "is";
  static constexpr std::tuple list{required(&InteriorSurface::id, "is.id"),
                                   required(&InteriorSurface::name, "is.name")};
};

template <>
struct Fields<PostProc> {
  static constexpr std::string_view section = "pp";
  static constexpr std::tuple list{
      optional(&PostProc::outBasename, "pp.outBasename", {.title = "Basename for output"}),
      optional(&PostProc::outputFrequency, "pp.outputFrequency", {.title = "Frequency of output"}),
      optional(&PostProc::vtk, "pp.vtk", {.title = "Legacy VTK"}),
      optional(&PostProc::matOut, "pp.matOut", {.title = "Matrix output"}),
      optional(&PostProc::vtkhdf, "pp.vtkhdf", {.title = "VTKHDF output"}),
      optional(&PostProc::csv, "pp.csv", {.title = "CSV output"}),
      optional(&PostProc::dumpSol, "pp.dumpSol", {.title = "Dump solution to disc"}),
      optional(&PostProc::interiorSurfaces, "pp.interiorSurfaces", {.title = "Interior surfaces"})};
};

template <>
struct Fields<Solver> {
  static constexpr std::string_view section = "solver";
  static constexpr std::tuple list{
      required(&Solver::type, "solver.type",
               {.title = "Type of iterative solver", .choices = kSolverTypeNames}),
      required(&Solver::rtol, "solver.rtol", {.title = "Relative tolerance"}),
      required(&Solver::atol, "solver.atol", {.title = "Absolute tolerance"}),
      required(&Solver::maxIter, "solver.maxIter", {.title = "Maximal num. iterations"}),
      optional(&Solver::verbose, "solver.verbose", {.title = "Verbose"}),
      optional(&Solver::restart, "solver.restart",
               {.title = "Iterations until restart", .description = "Only  used for GMRES"})};
};

template <>
struct Fields<ESProblem> {
  static constexpr std::string_view section = "esp";
  static constexpr std::tuple list{
      required(&ESProblem::domain, "esp.domain", {.title = "Domain"}),
      required(&ESProblem::dielectrics, "esp.dielectrics",
               {.title = "Dielectrics", .description = "List of dielectric domains"}),
      required(&ESProblem::electrodes, "esp.electrodes",
               {.title = "Electrodes", .description = "List of electrodes"}),
      required(&ESProblem::floatings, "esp.floatings",
               {.title = "Floating potentials", .description = "List of floating potentials"}),
      required(&ESProblem::fem, "esp.fem"),
      required(&ESProblem::bem, "esp.bem"),
      required(&ESProblem::postEval, "esp.postEval", {.title = "Post evaluation"}),
      required(&ESProblem::postProc, "esp.postProc", {.title = "Post processing"}),
      required(&ESProblem::systemSolver, "esp.systemSolver", {.title = "System solver"}),
      required(&ESProblem::postSolver, "esp.postSolver"),
      required(&ESProblem::numThreads, "esp.numThreads", {.title = "Number of threads"})};
};

}  // namespace velmo::conf
