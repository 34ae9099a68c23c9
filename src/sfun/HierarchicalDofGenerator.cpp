#include "sfun/HierarchicalDofGenerator.hpp"

#include <algorithm>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "io/Exception.hpp"
#include "linalg/Factorisations.hpp"
#include "sfun/RawFunctions.hpp"

namespace velmo::sfun {
namespace {

template <int D>
using Basis = HierarchicalBasisFunction<D, L2::L2LegendreGenerator>;

/// Values of the basis at the points of a rule, each multiplied by the weight of its point, and the
/// plain values; shape (numPoints, numFunctions) each.
struct SampledBasis {
  std::vector<double> plain;
  std::vector<double> weighted;
};

template <int D>
SampledBasis sample(const Basis<D>& basis, const quad::QuadratureInterface<2>& rule) {
  const u64 numPoints = rule.numPoints;
  SampledBasis sampled;
  sampled.plain.resize(numPoints * basis.numFunctions());
  basis.eval({rule.points, 2 * numPoints}, sampled.plain.data());
  sampled.weighted = sampled.plain;
  for (u64 i = 0; i < sampled.weighted.size(); ++i)
    sampled.weighted[i] *= rule.weights[i % numPoints];
  return sampled;
}

double dotProduct(const double* a, const double* b, u64 n) noexcept {
  double sum = 0.0;
  for (u64 i = 0; i < n; ++i) sum += a[i] * b[i];
  return sum;
}

template <int D>
HierarchicalDofGeneratorData makeData(u64 order, bool withInterpolation) {
  const Basis<D> basis(order);
  HierarchicalDofGeneratorData data;
  data.means = basis.transformation().means();
  if (!withInterpolation) return data;

  const quad::RuleFamily<2> family = detail_::ruleFamily<D>(2 * order + 1);
  const quad::QuadratureInterface<2> rule = quad::rule(family, 2 * order + 1);
  const SampledBasis sampled = sample<D>(basis, rule);
  const u64 n = basis.numFunctions();
  std::vector<double> mass(n * n);
  for (u64 j = 0; j < n; ++j)
    for (u64 i = 0; i < n; ++i)
      mass[j * n + i] = dotProduct(sampled.plain.data() + i * rule.numPoints,
                                   sampled.weighted.data() + j * rule.numPoints, rule.numPoints);
  data.interpolation.insert(0, {mass.data(), n, n});
  data.interpolation.finish();
  return data;
}

/// Entries are never moved or removed, so references to their data stay valid.
template <int D>
struct Registry {
  using Key = std::pair<u64, bool>;
  std::mutex mutex;
  std::map<Key, HierarchicalDofGeneratorData> entries;

  /// @pre the caller holds `mutex`
  void insert(const Key& key) {
    if (entries.contains(key))
      throw utility::RuntimeError(
          "sfun::HierarchicalDofGeneratorStorage::insert:Unable to insert data for key (" +
          std::to_string(key.first) + ", " + std::to_string(static_cast<int>(key.second)) + ")");
    entries.emplace(key, makeData<D>(key.first, key.second));
  }
};

template <int D>
Registry<D>& registry() {
  static Registry<D> instance;
  return instance;
}

}  // namespace

void InterpolationBlockMatrix::insert(u64 position, linalg::MatrixView<const double> block) {
  if (position >= blocks_.size()) blocks_.resize(position + 1);
  Block& place = blocks_[position];
  if (!place.values.empty())
    throw utility::RuntimeError(
        "velmo::sfun::InterpolationBlockMatrix::insert:Matrix block already exists!");
  place = {{block.values().begin(), block.values().end()}, block.rows, block.cols, false};
  size_ += block.rows;
  finished_ = false;
}

void InterpolationBlockMatrix::finish() {
  for (Block& block : blocks_) {
    if (block.values.empty() || block.isInverse) continue;
    linalg::invert(linalg::MatrixView<double>(block.values.data(), block.rows, block.cols));
    block.isInverse = true;
  }
  finished_ = true;
}

void InterpolationBlockMatrix::solve(std::span<const double> rhs, std::span<double> sol) const {
  if (!finished_)
    throw utility::RuntimeError("InterpolationBlockMatrix::solve:finish() has not been called!");
  if (rhs.size() < size_)
    throw utility::RuntimeError("InterpolationBlockMatrix::solve:Rhs is insufficient!");
  if (sol.size() < size_)
    throw utility::RuntimeError("InterpolationBlockMatrix::solve:Sol is insufficient!");
  u64 first = 0;
  for (const Block& block : blocks_) {
    std::fill_n(sol.data() + first, block.rows, 0.0);
    for (u64 j = 0; j < block.cols; ++j)
      for (u64 i = 0; i < block.rows; ++i)
        sol[first + i] += block.values[j * block.rows + i] * rhs[first + j];
    first += block.rows;
  }
}

template <int D>
const HierarchicalDofGeneratorData& HierarchicalDofGeneratorStorage<D>::getInstance(
    u64 order, bool withInterpolation, bool allowInsert) {
  Registry<D>& all = registry<D>();
  const std::lock_guard lock(all.mutex);
  auto found = all.entries.find({order, withInterpolation});
  if (found == all.entries.end() && allowInsert) {
    all.insert({order, withInterpolation});
    found = all.entries.find({order, withInterpolation});
  }
  if (found == all.entries.end())
    throw utility::RuntimeError("HierarchicalDofGenerator::getInstance::Data not found!");
  return found->second;
}

template <int D>
void HierarchicalDofGeneratorStorage<D>::insert(u64 order, bool withInterpolation) {
  Registry<D>& all = registry<D>();
  const std::lock_guard lock(all.mutex);
  all.insert({order, withInterpolation});
}

template <int D>
HierarchicalDofGenerator<D>::HierarchicalDofGenerator(u64 order)
    : basis_(order), data_(HierarchicalDofGeneratorStorage<D>::getInstance(order, true)) {}

template <int D>
std::vector<double> HierarchicalDofGenerator<D>::solve(const Function& function) const {
  const u64 order = std::max<u64>(2 * basis_.order() + 1, 5);
  const quad::RuleFamily<2> family = detail_::ruleFamily<D>(order);
  const quad::QuadratureInterface<2> rule = quad::rule(family, order);
  std::vector<double> values(rule.numPoints);
  function({rule.points, 2 * rule.numPoints}, values);

  const SampledBasis sampled = sample<D>(basis_, rule);
  std::vector<double> rhs(basis_.numFunctions());
  for (u64 i = 0; i < rhs.size(); ++i)
    rhs[i] =
        dotProduct(sampled.weighted.data() + i * rule.numPoints, values.data(), rule.numPoints);
  std::vector<double> coefficients(rhs.size());
  data_.interpolation.solve(rhs, coefficients);
  return coefficients;
}

template class HierarchicalDofGeneratorStorage<2>;
template class HierarchicalDofGeneratorStorage<3>;
template class HierarchicalDofGenerator<2>;
template class HierarchicalDofGenerator<3>;

}  // namespace velmo::sfun
