#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "accuracy/Evaluation.hpp"
#include "samples/MakeSample.hpp"
#include "support/RunProgram.hpp"
#include "support/TemporaryFolder.hpp"
#include "validation/RunResult.hpp"

/// Runs of the program on samples, and its tables read back.
namespace orvanta {

namespace fs = std::filesystem;
using velmo::u64;
using velmo::accuracy::Errors;
using velmo::accuracy::Values;
using velmo::samples::Elements;
using velmo::samples::PointSet;
using velmo::samples::Sample;
using velmo::samples::SampleRequest;
using velmo::test::ProgramResult;
using velmo::test::readFile;
using velmo::test::TemporaryFolder;

inline const std::string tableHead = "X,Y,Z,Potential,EFieldX,EFieldY,EFieldZ\n";

/// A small sphere with near and far field, points in a shell around it.
inline SampleRequest smallRequest(const fs::path& out) {
  SampleRequest request;
  request.mesh.refine = 4;
  request.count = 150;
  request.settings.fmm = {.leafQuadratureOrder = 12, .degree = 8};
  request.settings.tree.leafSize = 30;
  request.settings.numThreads = 2;
  request.out = out;
  return request;
}

inline Sample write(const SampleRequest& request) {
  Sample sample = makeSample(request);
  (void)writeSample(request, sample);
  return sample;
}

inline ProgramResult run(const fs::path& base, const std::vector<std::string>& more = {}) {
  std::vector<std::string> arguments{"--input=" + base.string() + ".vtkhdf",
                                     "--points=" + base.string() + ".xyz",
                                     "--settings=" + base.string() + ".yaml"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return velmo::test::runProgram(ORVANTA_POST_PROGRAM, arguments, base.parent_path());
}

struct Table {
  std::vector<double> points;
  Values values;
};

/// Reads a result file, strictly: seven numbers per line, nothing else.
inline Table readTable(const fs::path& path) {
  EXPECT_TRUE(readFile(path).starts_with(tableHead)) << path;
  Table table;
  for (const auto& [x, potential, gradient] : velmo::validation::readTable(path)) {
    table.points.insert(table.points.end(), x.begin(), x.end());
    table.values.potential.push_back(potential);
    table.values.field.insert(table.values.field.end(), gradient.begin(), gradient.end());
  }
  return table;
}

/// The same sample by quadrature over all pairs, without files.
inline Values allPairs(const SampleRequest& request, const Sample& sample) {
  return evaluate({sample.mesh, sample.density, sample.points},
                  velmo::accuracy::allNear(
                      {request.settings.tree, request.settings.fmm, request.settings.quad}));
}

/// Every line belongs to the point of its line in the input and holds what all pairs give.
inline void expectTable(const fs::path& path, const SampleRequest& request, const Sample& sample) {
  const Table table = readTable(path);
  ASSERT_EQ(table.points, sample.points);
  const Errors e = velmo::accuracy::errors(table.values, allPairs(request, sample));
  EXPECT_LT(e.potential, 2e-4);
  EXPECT_LT(e.field, 2e-3);
}

}  // namespace orvanta
