#include "fe/ShapeCache.hpp"

#include <algorithm>
#include <array>
#include <string>

#include "io/Exception.hpp"

namespace velmo::fe {
namespace {

using topo::ReferenceType;

constexpr std::array<ReferenceType, 2> kShapes{ReferenceType::Triangle,
                                               ReferenceType::Quadrilateral};

/// Place of a shape in `kShapes`.
u64 blockOf(ReferenceType shape) {
  const auto found = std::find(kShapes.begin(), kShapes.end(), shape);
  if (found == kShapes.end()) throw utility::RuntimeError("2-dim can only have 3 or 4 nodes");
  return static_cast<u64>(found - kShapes.begin());
}

std::string nameOf(BasisKind kind) {
  return kind == BasisKind::L2 ? "L2" : std::to_string(static_cast<std::uint32_t>(kind));
}

void fillWeighted(const ShapeFunList<2, 3>& list, ReferenceType shape,
                  const quad::QuadratureInterface<2>& rule, std::span<double> block) {
  const u64 numPoints = rule.numPoints;
  const u64 numFunctions = list.numDofs(shape);
  list.evaluate(shape, {rule.points, 2 * numPoints}, {block.data(), numPoints, numFunctions});
  for (u64 i = 0; i < numFunctions; ++i)
    for (u64 q = 0; q < numPoints; ++q) block[i * numPoints + q] *= rule.weights[q];
}

}  // namespace

void ShapeCache::add(std::span<const ReferenceType> elements, const ShapeFunList<2, 3>& list,
                     const quad::SurfaceRuleSet& rules) {
  const Key key{list.order, BasisKind::L2};
  if (const auto found = std::find(keys_.begin(), keys_.end(), key); found != keys_.end()) {
    if (!std::ranges::equal(blocks_[static_cast<std::size_t>(found - keys_.begin())]->elementKinds,
                            elements))
      throw utility::RuntimeError("The basis " + nameOf(key.kind) + "/" +
                                  std::to_string(key.order) +
                                  " has been cached for other elements");
    return;
  }

  std::array<bool, kShapes.size()> inUse{};
  for (const ReferenceType shape : elements) inUse[blockOf(shape)] = true;

  auto blocks = std::make_unique<Blocks>();
  std::array<quad::QuadratureInterface<2>, kShapes.size()> shapeRules;
  std::vector<u64> sizes;
  for (u64 i = 0; i < kShapes.size(); ++i) {
    if (inUse[i]) shapeRules[i] = rules.rule(kShapes[i], std::max(list.order, rules.order));
    blocks->numPoints.push_back(shapeRules[i].numPoints);
    sizes.push_back(shapeRules[i].numPoints * list.numDofs(kShapes[i]));
  }
  blocks->values = quad::RealBlockStore(std::move(sizes));
  for (u64 i = 0; i < kShapes.size(); ++i)
    if (inUse[i]) fillWeighted(list, kShapes[i], shapeRules[i], blocks->values.block(i));

  blocks->elementKinds.assign(elements.begin(), elements.end());
  keys_.push_back(key);
  blocks_.push_back(std::move(blocks));
}

linalg::MatrixView<const double, -1, 1> ShapeCache::get(u64 order, BasisKind kind,
                                                        u64 element) const {
  const auto found = std::find(keys_.begin(), keys_.end(), Key{order, kind});
  if (found == keys_.end())
    throw utility::RuntimeError("This basis type has not been cached: " + nameOf(kind) + "/" +
                                std::to_string(order));
  if (element == kNone)
    throw utility::RuntimeError(
        "This entity is only temporary, to get the index of its original use "
        "velmo::topo::Grid::index( entity ) instead");
  const auto& kinds = blocks_[static_cast<std::size_t>(found - keys_.begin())]->elementKinds;
  if (element >= kinds.size()) throw utility::RuntimeError("Access beyond storage");
  const linalg::MatrixView<const double> block = matrix(order, kind, kinds[element]);
  return {block.data, block.size};
}

linalg::MatrixView<const double> ShapeCache::matrix(u64 order, BasisKind kind,
                                                    ReferenceType shape) const {
  const auto found = std::find(keys_.begin(), keys_.end(), Key{order, kind});
  if (found == keys_.end()) throw utility::RuntimeError("Asking for the wrong cache");
  const Blocks& blocks = *blocks_[static_cast<std::size_t>(found - keys_.begin())];
  const u64 i = blockOf(shape);
  const std::span<const double> values = blocks.values.block(i);
  if (values.empty()) throw utility::RuntimeError("Access beyond storage");
  return {values.data(), blocks.numPoints[i], values.size() / blocks.numPoints[i]};
}

}  // namespace velmo::fe
