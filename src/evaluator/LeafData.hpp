#pragma once

#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "io/Types.hpp"
#include "tree/SrcTrgTree.hpp"

namespace velmo::evaluator {

/// The elements of the leaves: each leaf with sources has a stretch of the sorted element list.
class LeafElements {
 public:
  explicit LeafElements(const tree::SrcTrgTree<fmm::Box<3>>& tree);

  /// @throws utility::RuntimeError "LeafElements box <id> not found: " and all boxes
  [[nodiscard]] tree::ObjectRange of(bits::Morton leaf) const;

  /// Identifiers of the leaves, ascending.
  [[nodiscard]] std::span<const bits::Morton> leaves() const noexcept { return leaves_; }

 private:
  std::vector<bits::Morton> leaves_;
  std::vector<tree::ObjectRange> ranges_;
};

/// Degrees of freedom of the leaves, numbered from 0 in each leaf, element after element.
class LeafDofs {
 public:
  /// @param bem::dofOffsets first coefficient of each sorted element and the end; refers to it
  LeafDofs(const LeafElements& elements, std::span<const u64> dofOffsets)
      : elements_(&elements), dofOffsets_(dofOffsets) {}

  /// The leaf's stretch of the coefficient vector.
  /// @throws utility::RuntimeError "LeafDofs box <id> not found: " and all boxes
  [[nodiscard]] tree::ObjectRange of(bits::Morton leaf) const;

 private:
  const LeafElements* elements_;
  std::span<const u64> dofOffsets_;
};

}  // namespace velmo::evaluator
