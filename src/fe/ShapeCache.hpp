#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "fe/ShapeFunList.hpp"
#include "linalg/MatrixView.hpp"
#include "quad/RuleFamily.hpp"
#include "quad/SurfaceRuleSet.hpp"
#include "topo/ReferenceElement.hpp"

namespace velmo::fe {

/// Kind of a basis in the keys of a cache.
enum class BasisKind : std::uint32_t { L2 = 3 };

/// Shape functions at the points of the elements' rules, multiplied by the rules' weights, filled
/// once per order and read-only afterwards.
///
/// The values don't depend on an element's geometry, so all elements of a shape share one block:
/// nQ rows (rule points) by nS columns (functions), column-major.
class ShapeCache {
 public:
  /// Fills the block of key (list.order, L2) unless it exists. Elements of other keys may differ.
  ///
  /// @param elements shape of each element; the place in the span is the element's index
  /// @param rules    the rule of an element is that of the set's order; if the list's order is
  ///                 above all of the set's, the fallback warns on standard error
  /// @throws utility::RuntimeError "2-dim can only have 3 or 4 nodes" for another shape, "The basis
  ///         L2/<order> has been cached for other elements"
  void add(std::span<const topo::ReferenceType> elements, const ShapeFunList<2, 3>& list,
           const quad::SurfaceRuleSet& rules);

  /// The block of an element as a column of nQ nS values, valid as long as the cache. Tests compare
  /// `matrix` with this plain look-up by element.
  ///
  /// @throws utility::RuntimeError
  ///         "This basis type has not been cached: L2/<order>" for an unknown key,
  ///         "This entity is only temporary, to get the index of its original use
  ///         velmo::topo::Grid::index( entity ) instead" for the index of a temporary entity,
  ///         "Access beyond storage" for an index beyond the last element
  [[nodiscard]] linalg::MatrixView<const double, -1, 1> get(u64 order, BasisKind kind,
                                                            u64 element) const;

  /// The block of all elements of one shape as a matrix of shape (nQ, nS): look it up once, outside
  /// the loop over the elements.
  /// @throws utility::RuntimeError "Asking for the wrong cache" for an unknown key, "Access beyond
  ///         storage" if no element has this shape
  [[nodiscard]] linalg::MatrixView<const double> matrix(u64 order, BasisKind kind,
                                                        topo::ReferenceType shape) const;

 private:
  struct Key {
    u64 order;
    BasisKind kind;
    bool operator==(const Key&) const = default;
  };

  /// Two blocks, of the triangle and of the quadrilateral, empty for a shape without elements.
  struct Blocks {
    quad::RealBlockStore values;
    std::vector<u64> numPoints;
    std::vector<topo::ReferenceType> elementKinds;  ///< of each element
  };

  std::vector<Key> keys_;
  std::vector<std::unique_ptr<Blocks>> blocks_;  ///< in the order of `keys_`
};

}  // namespace velmo::fe
