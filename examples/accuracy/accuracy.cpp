#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iostream>
#include <string>
#include <vector>

#include "accuracy/LargeElements.hpp"
#include "accuracy/Problems.hpp"
#include "io/Format.hpp"

namespace {

using velmo::u64;
using velmo::accuracy::Errors;
using velmo::accuracy::Method;
using velmo::accuracy::NamedProblem;
using velmo::accuracy::Problem;

constexpr std::array<u64, 9> kDegrees{3, 4, 5, 6, 8, 10, 12, 15, 16};

/// High enough that the rules don't affect the figures.
constexpr u64 kLeafOrder = 19;
constexpr u64 kNearOrder = 12;

std::array<Errors, kDegrees.size()> errorsByDegree(const Problem& problem,
                                                   const velmo::tree::Options& tree) {
  Method method{.tree = tree, .fmm = {.leafQuadratureOrder = kLeafOrder}, .quad = {}};
  method.quad.order = kNearOrder;
  const auto expected = velmo::accuracy::evaluate(problem, velmo::accuracy::allNear(method));
  std::array<Errors, kDegrees.size()> result;
  std::transform(kDegrees.begin(), kDegrees.end(), result.begin(), [&](u64 degree) {
    method.fmm.degree = degree;
    return velmo::accuracy::errors(velmo::accuracy::evaluate(problem, method), expected);
  });
  return result;
}

std::string describe(const NamedProblem& named, const Problem& problem) {
  const auto tree = velmo::accuracy::treeFigures(problem, named.tree);
  return velmo::io::format("{} | {} | {} | {} | {} | {} | {} | {} | {:.2f}", named.name,
                           problem.density.order, problem.mesh.numElements(),
                           problem.points.size() / 3, tree.numLevels, tree.numV, tree.numW,
                           tree.numX, tree.overhang);
}

/// The errors of one quantity and the mean factor by which one more degree reduces them.
std::string describe(const std::array<Errors, kDegrees.size()>& errors, double Errors::*quantity) {
  std::string row;
  for (const Errors& e : errors) row += velmo::io::format("{:.1e} | ", e.*quantity);
  const auto numSteps = static_cast<double>(kDegrees.back() - kDegrees.front());
  const double ratio = errors.front().*quantity / (errors.back().*quantity);
  return row + velmo::io::format("{:.2f}", std::pow(ratio, 1.0 / numSteps));
}

/// Errors of potential and field at degrees 5, 8 and 12.
std::string describeLarge(const NamedProblem& named) {
  const Problem problem = named.make();
  Method method{.tree = named.tree, .fmm = {}, .quad = {}};
  method.quad.order = 8;
  method.quad.minRelDist = 2.0;
  const auto expected = velmo::accuracy::evaluate(problem, velmo::accuracy::allNear(method));
  std::string row = velmo::io::format("{} | {} | {} | {}", named.name, problem.mesh.numElements(),
                                      problem.points.size() / 3, named.tree.leafSize);
  for (const u64 degree : {u64{5}, u64{8}, u64{12}}) {
    method.fmm.degree = degree;
    method.fmm.leafQuadratureOrder = degree + 3;
    const Errors e = velmo::accuracy::errors(velmo::accuracy::evaluate(problem, method), expected);
    row += velmo::io::format(" | {:.1e}, {:.1e}", e.potential, e.field);
  }
  return row;
}

void print(const std::string& title, const std::string& columns,
           const std::vector<std::string>& rows) {
  std::cout << title << "\n\n| # | " << columns << " |\n|--:|";
  const auto numColumns = std::count(columns.begin(), columns.end(), '|') + 1;
  for (std::ptrdiff_t i = 0; i < numColumns; ++i) std::cout << (i == 0 ? "---|" : "--:|");
  std::cout << '\n';
  for (std::size_t i = 0; i < rows.size(); ++i)
    std::cout << "| " << i + 1 << " | " << rows[i] << " |\n";
  std::cout << '\n';
}

}  // namespace

/// Prints the errors of the fast evaluation against the evaluation of all pairs, as tables.
int main() {
  std::vector<NamedProblem> list = velmo::accuracy::problems();
  list.push_back(velmo::accuracy::coarseElements());
  std::vector<std::string> trees;
  std::vector<std::string> potential;
  std::vector<std::string> field;
  for (const NamedProblem& named : list) {
    const Problem problem = named.make();
    const auto errors = errorsByDegree(problem, named.tree);
    trees.push_back(describe(named, problem));
    potential.push_back(describe(errors, &Errors::potential));
    field.push_back(describe(errors, &Errors::field));
  }
  std::string columns;
  for (const u64 degree : kDegrees) columns += velmo::io::format("p = {} | ", degree);
  columns += "factor";
  print("Problems:", "problem | order | elements | points | levels | V | W | X | overhang", trees);
  print("Error of the potential:", columns, potential);
  print("Error of the field:", columns, field);

  std::vector<std::string> large;
  for (const NamedProblem& named : velmo::accuracy::largeElementProblems())
    large.push_back(describeLarge(named));
  print("Elements larger than their boxes, errors of potential and field:",
        "problem | elements | points | leafSize | p = 5 | p = 8 | p = 12", large);
  return 0;
}
