#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "grid/Geometry.hpp"
#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "samples/ClosedForm.hpp"
#include "samples/CommandLine.hpp"
#include "samples/MakeSample.hpp"
#include "validation/Errors.hpp"
#include "validation/PointSets.hpp"
#include "validation/RunResult.hpp"

namespace velmo::validation {
namespace {

using samples::SampleRequest;
using samples::Words;
using utility::RuntimeError;

constexpr std::string_view kHelp = R"(validate write|settings [near=LOW,HIGH] [gap=N] OPTIONS
validate head
validate compare TABLE REPORT [label=TEXT] [near=LOW,HIGH] [gap=N] [reference=TABLE]
         [within=POTENTIAL,FIELD] OPTIONS
Writes a body with a known potential and points far from it, near to it, inside and in its gap into
NAME.vtkhdf, NAME.xyz and NAME.yaml, or NAME.yaml alone. Compares a result with the closed form and
with the table of another run, and prints a line per set of points; head prints the names of the
columns. With within= the status is 1 if an l2 error is above. OPTIONS are those of make_sample;
--count is that of each set, gap= that on the axis of a gap (50). near= gives distances in element
sizes (0.1,1).
)";

constexpr std::string_view kHead =
    "study,body,elements,geometry,density,refine,num_elements,size,degree,leaf_order,near_order,"
    "min_rel_dist,leaf_size,set,count,potential_l2,potential_max,field_l2,field_max,"
    "eval_potential_l2,eval_potential_max,eval_field_l2,eval_field_max,"
    "preparation,setup,apply,total\n";

std::string nameOf(samples::Body body) {
  using samples::Body;
  switch (body) {
    case Body::Ellipsoid:
      return "ellipsoid";
    case Body::SpherePair:
      return "sphere-pair";
    case Body::DiscPair:
      return "disc-pair";
    default:
      return "sphere";
  }
}

/// Root mean square of the sizes sqrt(2 area).
double elementSize(const samples::SurfaceMesh& mesh) {
  const auto geometry = grid::surfaceGeometry(gridData(mesh));
  double area = 0.0;
  for (u64 e = 0; e < mesh.numElements(); ++e) area += geometry.element(mesh.vertices(e), e).area();
  return std::sqrt(2.0 * area / static_cast<double>(mesh.numElements()));
}

/// The columns that describe the run.
std::string describe(const SampleRequest& request, const samples::SurfaceMesh& mesh) {
  const auto& settings = request.settings;
  const bool triangles = request.mesh.elements == samples::Elements::Triangles;
  return io::format("{},{},{},{},{},{},{:.4f},{},{},{},{},{}", nameOf(request.body),
                    triangles ? "triangles" : "quads", request.mesh.geometryOrder,
                    settings.femOrder, request.mesh.refine, mesh.numElements(), elementSize(mesh),
                    settings.fmm.degree, settings.fmm.leafQuadratureOrder, settings.quad.order,
                    settings.quad.minRelDist, settings.tree.leafSize);
}

std::string describe(const Errors& e) {
  return io::format("{:.4e},{:.4e},{:.4e},{:.4e}", e.potential.l2, e.potential.largest, e.field.l2,
                    e.field.largest);
}

/// Largest l2 errors that pass.
struct Bounds {
  double potential = HUGE_VAL;
  double field = HUGE_VAL;
};

/// What the command line asks for.
struct Task {
  SampleRequest request;
  PlaceOptions places;
  std::string label;
  std::string reference;
  Bounds bounds;
};

void writeInputs(const Task& task) {
  const SampleRequest& request = task.request;
  const samples::SurfaceMesh mesh = makeMesh(request);
  samples::pieces(mesh, makeDensity(request, mesh)).write(request.file(".vtkhdf"));
  samples::writeXyz(request.file(".xyz"), joined(pointSets(request, mesh, task.places)),
                    "sets of points one behind the other");
  samples::writeSettings(request.file(".yaml"), request.settings);
}

std::vector<Row> tableOf(const std::filesystem::path& path, const samples::Points& points) {
  std::vector<Row> rows = readTable(path);
  bool same = 3 * rows.size() == points.size();
  for (u64 i = 0; same && i < points.size(); ++i) same = rows[i / 3].x.at(i % 3) == points[i];
  if (!same) throw RuntimeError(io::format("'{}' holds other points", path.string()));
  return rows;
}

/// Prints the line of one set; returns whether its errors are within the bounds.
bool measure(const Task& task, const std::string& head, const PointSet& set,
             std::span<const Row> rows, std::span<const Row> reference, const std::string& tail) {
  const auto exact = closedForm(task.request);
  const Errors errors = againstClosedForm(rows, *exact);
  const std::string evaluation =
      reference.empty() ? ",,," : describe(againstRun(rows, reference, *exact));
  std::cout << io::format("{},{},{},{},{},{}\n", head, set.name, set.count(), describe(errors),
                          evaluation, tail);
  const Bounds& bounds = task.bounds;
  if (errors.potential.l2 <= bounds.potential && errors.field.l2 <= bounds.field) return true;
  std::cerr << io::format("validate: {} {}: l2 errors {:.1e} and {:.1e} above {:.1e} or {:.1e}\n",
                          nameOf(task.request.body), set.name, errors.potential.l2, errors.field.l2,
                          bounds.potential, bounds.field);
  return false;
}

int compare(const Task& task, const std::filesystem::path& table,
            const std::filesystem::path& report) {
  const samples::SurfaceMesh mesh = makeMesh(task.request);
  const std::vector<PointSet> sets = pointSets(task.request, mesh, task.places);
  const samples::Points points = joined(sets);
  const std::vector<Row> rows = tableOf(table, points);
  std::vector<Row> reference;
  if (!task.reference.empty()) reference = tableOf(task.reference, points);
  const Times times = readReport(report);

  const std::string head = task.label + "," + describe(task.request, mesh);
  const std::string tail = io::format("{:.3f},{:.3f},{:.3f},{:.3f}", times.preparation, times.setup,
                                      times.apply, times.total);
  bool passed = true;
  u64 first = 0;
  for (const PointSet& set : sets) {
    const auto part = [&](const std::vector<Row>& all) {
      return all.empty() ? std::span<const Row>{} : std::span(all).subspan(first, set.count());
    };
    passed = measure(task, head, set, part(rows), part(reference), tail) && passed;
    first += set.count();
  }
  return passed ? 0 : 1;
}

double numberOf(std::string_view text) {
  const auto number = samples::numberIn(text);
  if (!number || !(*number >= 0.0))
    throw RuntimeError(io::format("Expected a number, got '{}'", text));
  return *number;
}

/// Reads two numbers with a comma between them.
samples::Reader numberPair(double& first, double& second) {
  return [&first, &second](std::string_view text) {
    const auto comma = std::min(text.find(','), text.size());
    first = numberOf(text.substr(0, comma));
    second = numberOf(text.substr(std::min(comma + 1, text.size())));
    return true;
  };
}

samples::Reader word(std::string& value) {
  return [&value](std::string_view text) {
    value = text;
    return true;
  };
}

/// Words with dashes are options of the sample, the others are for this tool.
Task taskOf(Words words) {
  Task task;
  std::vector<const char*> ofSample{"--density=exact"};
  std::vector<const char*> own;
  for (const char* const w : words)
    (std::string_view(w).starts_with("--") ? ofSample : own).push_back(w);
  const auto readGapCount = [&task](std::string_view text) {
    task.places.gapCount = static_cast<u64>(numberOf(text));
    return true;
  };
  const auto refuse = [](std::string_view text) -> bool {
    throw RuntimeError(io::format("Unknown word '{}'", text));
  };
  samples::readOptions(
      {{"label", "TEXT", "", word(task.label)},
       {"reference", "TABLE", "", word(task.reference)},
       {"near", "LOW,HIGH", "", numberPair(task.places.nearLow, task.places.nearHigh)},
       {"gap", "N", "", readGapCount},
       {"within", "POTENTIAL,FIELD", "", numberPair(task.bounds.potential, task.bounds.field)},
       {"", "", "", refuse}},
      own);
  task.request = samples::parseRequest(ofSample);
  return task;
}

int run(Words words) {
  const std::string_view verb = words.empty() ? "--help" : words.front();
  const Words arguments = words.subspan(std::min<std::size_t>(words.size(), 1));
  if (verb == "head") {
    std::cout << kHead;
  } else if (verb == "write") {
    writeInputs(taskOf(arguments));
  } else if (verb == "settings") {
    const Task task = taskOf(arguments);
    samples::writeSettings(task.request.file(".yaml"), task.request.settings);
  } else if (verb == "compare" && arguments.size() > 2) {
    return compare(taskOf(arguments.subspan(2)), arguments[0], arguments[1]);
  } else {
    std::cout << kHelp;
    return verb == "--help" ? 0 : 1;
  }
  return 0;
}

}  // namespace
}  // namespace velmo::validation

/// Writes problems with known potentials and measures results against them.
int main(int argc, char** argv) {
  return velmo::samples::runTool("validate", argc, argv, velmo::validation::run);
}
