#include <array>
#include <cmath>
#include <fstream>
#include <iostream>
#include <limits>
#include <numbers>
#include <string>
#include <string_view>
#include <vector>

#include "io/Exception.hpp"
#include "io/Format.hpp"
#include "samples/ClosedForm.hpp"
#include "samples/CommandLine.hpp"

namespace velmo::samples {
namespace {

using utility::RuntimeError;

constexpr std::string_view kHelp =
    "compare_sphere FILE.csv [--charge=Q] [--radius=R] [--within=X]\n"
    "Compares a result table with a sphere around the origin that carries the charge Q (1) evenly\n"
    "on its radius R (1). With --within the exit status is 1 if the l2 error of a column is above\n"
    "X or no number.\n";

/// One line of the table.
struct Row {
  Vec3 x{};
  double potential = 0.0;
  Vec3 gradient{};
};

struct Request {
  std::string table;
  ChargedSphere sphere;
  double within = std::numeric_limits<double>::infinity();
};

double numberOf(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first != std::string_view::npos) text.remove_prefix(first);
  const auto number = numberIn(text);
  if (!number) throw RuntimeError(io::format("Expected a number, got '{}'", text));
  return *number;
}

Request parseRequest(Words words) {
  Request request;
  const auto numberTo = [](double& value) {
    return [&value](std::string_view text) {
      value = numberOf(text);
      return true;
    };
  };
  const auto readTablePath = [&request](std::string_view word) {
    if (!request.table.empty()) throw RuntimeError("Expected one table");
    request.table = word;
    return true;
  };
  readOptions({{"--charge", "Q", "", numberTo(request.sphere.charge)},
               {"--radius", "R", "", numberTo(request.sphere.radius)},
               {"--within", "X", "", numberTo(request.within)},
               {"", "FILE.csv", "", readTablePath}},
              words);
  if (request.table.empty()) throw RuntimeError("Expected the path of a table");
  return request;
}

Row rowOf(std::string_view line) {
  std::array<double, 7> values{};
  for (std::size_t k = 0; k < values.size(); ++k) {
    const auto comma = line.find(',');
    if ((comma == std::string_view::npos) != (k + 1 == values.size()))
      throw RuntimeError("Expected seven columns");
    values.at(k) = numberOf(line.substr(0, comma));
    line.remove_prefix(comma == std::string_view::npos ? line.size() : comma + 1);
  }
  return {{values[0], values[1], values[2]}, values[3], {values[4], values[5], values[6]}};
}

std::vector<Row> readTable(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  if (!std::getline(file, line)) throw RuntimeError(io::format("Cannot read '{}'", path));
  std::vector<Row> rows;
  while (std::getline(file, line)) rows.push_back(rowOf(line));
  return rows;
}

/// Largest error at a point and error of all points together, relative to the exact values.
class RelativeError {
 public:
  void add(double error, double exact) {
    const double relative = error / exact;
    if (!(relative <= max_) && !std::isnan(max_)) max_ = relative;
    errorSquares_ += error * error;
    exactSquares_ += exact * exact;
  }
  [[nodiscard]] double max() const { return max_; }
  [[nodiscard]] double l2() const { return std::sqrt(errorSquares_ / exactSquares_); }

 private:
  double max_ = 0.0;
  double errorSquares_ = 0.0;
  double exactSquares_ = 0.0;
};

struct Side {
  std::size_t count = 0;
  RelativeError potential;
  RelativeError field;

  void add(const Row& row, const ChargedSphere& sphere) {
    const double scale = std::abs(sphere.charge) / (4.0 * std::numbers::pi);
    const double exact = sphere.potential(row.x);
    const Vec3 gradient = sphere.gradient(row.x);
    const double magnitude = norm(gradient);
    ++count;
    potential.add(std::abs(row.potential - exact), std::abs(exact));
    // The field inside is zero: measure it by the one just outside, Q / (4 pi R^2).
    field.add(norm(row.gradient - gradient),
              magnitude > 0.0 ? magnitude : scale / (sphere.radius * sphere.radius));
  }
  void print(std::string_view name) const {
    if (count == 0) return;
    std::cout << io::format("{:<8} {:>8}  {:>13.1e} {:>9.1e}  {:>9.1e} {:>9.1e}\n", name, count,
                            potential.max(), potential.l2(), field.max(), field.l2());
  }
  /// Whether there is nothing to measure or all errors are small.
  [[nodiscard]] bool within(double limit) const {
    return count == 0 || (potential.l2() <= limit && field.l2() <= limit);
  }
};

int compare(Words words) {
  if (words.empty() || std::string_view(words.front()) == "--help") {
    std::cout << kHelp;
    return 0;
  }
  const Request request = parseRequest(words);
  Side outside;
  Side inside;
  for (const Row& row : readTable(request.table))
    (norm(row.x) < request.sphere.radius ? inside : outside).add(row, request.sphere);
  if (outside.count + inside.count == 0) throw RuntimeError("The table has no rows");

  std::cout << "Relative error against the closed form of the charged sphere\n"
            << "           points  potential max        l2  field max        l2\n";
  outside.print("outside");
  inside.print("inside");
  if (std::isinf(request.within)) return 0;
  const bool small = outside.within(request.within) && inside.within(request.within);
  std::cout << io::format("{} l2 errors within {:.0e}\n", small ? "PASSED: all" : "FAILED: not all",
                          request.within);
  return small ? 0 : 1;
}

}  // namespace
}  // namespace velmo::samples

/// Compares the result for a charged sphere with its closed form.
int main(int argc, char** argv) {
  return velmo::samples::runTool("compare_sphere", argc, argv, velmo::samples::compare);
}
