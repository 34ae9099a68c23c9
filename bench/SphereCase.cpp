#include "SphereCase.hpp"

#include <malloc.h>

#include <algorithm>
#include <complex>
#include <span>

#include "grid/GridData.hpp"
#include "samples/Bodies.hpp"
#include "samples/Points.hpp"
#include "thread/ThreadPool.hpp"

namespace velmo::bench {
namespace {

std::unique_ptr<sparse::ParVec> viewOf(std::span<double> values) {
  return std::make_unique<sparse::ParVec>(sparse::IndexLayout(0, values.size()),
                                          linalg::MatrixView<double, -1, 1>(values));
}

/// Bytes that the program holds on the heap.
u64 heapBytes() {
  const auto heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}

}  // namespace

SphereCase::SphereCase(u64 refine, u64 leafSize, u64 threads)
    : leafSize_(leafSize), surface_(samples::gridData(samples::sphere({.refine = refine}))) {
  thread::setNumThreads(threads);
  const u64 n = surface_.numElements;
  points_ = grid::makePointCloud(samples::randomInShell(n, {}, 0.9, 1.1, 1), n);

  const u64 before = heapBytes();
  tree_ = makeTree();
  const u64 between = heapBytes();
  makeEvaluator();
  treeBytes_ = between - before;
  evaluatorBytes_ = heapBytes() - between;

  values_.assign(5 * n, 0.0);
  const std::span<double> all(values_);
  std::ranges::fill(all.first(n), 1.0);
  density_ = viewOf(all.first(n));
  potential_ = viewOf(all.subspan(n, n));
  field_ = viewOf(all.subspan(2 * n));
}

std::unique_ptr<tree::FmmTree> SphereCase::makeTree() const {
  return std::make_unique<tree::FmmTree>(points_, surface_, tree::Options{.leafSize = leafSize_}, 0,
                                         0);
}

void SphereCase::makeEvaluator() {
  evaluator_.reset();
  evaluator_ = std::make_unique<evaluator::FmmEvaluator>(*tree_, std::pair<u64, u64>{0, 0},
                                                         bem::fmm::Settings{.degree = kDegree},
                                                         bem::EvalQuadratureSettings{}, 0);
}

u64 SphereCase::numConversions() const {
  u64 count = 0;
  for (const auto& box : tree_->tree().boxes) count += box.listV().size();
  return count;
}

u64 SphereCase::expansionBytes() const {
  u64 count = 0;
  for (const auto& box : tree_->tree().boxes) count += box.multipole.size + box.local.size;
  return count * sizeof(std::complex<double>);
}

void SphereCase::apply() { evaluator_->apply({*density_, *density_}, {*field_, *potential_}); }

}  // namespace velmo::bench
