#pragma once

#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "io/Types.hpp"
#include "tree/SrcTrgTree.hpp"

/// Elements and degrees of freedom by the identifier of their leaf.
///
/// The passes walk boxes by position and ask SrcTrgTree::sourceRanges for their elements. This is
/// the view for callers that have an identifier, such as tests or a debugger: each look-up is a
/// bisection, and an identifier that isn't a leaf with sources is refused with a list of those that
/// are. Read-only after construction; look-ups may run on many threads.
namespace velmo::evaluator {

/// The elements of the leaves: each leaf with sources has a range of the sorted element list, and
/// each element is in the range of exactly one leaf.
class LeafElements {
 public:
  /// @param tree after mark(); only read in the constructor
  explicit LeafElements(const tree::SrcTrgTree<fmm::Box<3>>& tree);

  /// The leaf's range of the sorted elements; never empty.
  /// @throws utility::RuntimeError "LeafElements box <id> not found: " and all leaves with sources,
  ///   separated by blanks
  [[nodiscard]] tree::ObjectRange of(bits::Morton leaf) const;

  /// Identifiers of the leaves with sources, ascending by plain value.
  [[nodiscard]] std::span<const bits::Morton> leaves() const noexcept { return leaves_; }

 private:
  std::vector<bits::Morton> leaves_;
  std::vector<tree::ObjectRange> ranges_;  ///< one per leaf, in their order
};

/// Degrees of freedom of the leaves. Those of an element follow each other in the coefficient
/// vector, and elements are in sorted order, so those of a leaf are a contiguous range, too: number
/// i of a leaf, counted from 0 element after element, is coefficient first + i.
class LeafDofs {
 public:
  /// Refers to both, which must outlive it.
  /// @param dofOffsets first coefficient of each sorted element and the end, shape
  ///        (numElements + 1), as bem::dofOffsets gives it
  LeafDofs(const LeafElements& elements, std::span<const u64> dofOffsets)
      : elements_(&elements), dofOffsets_(dofOffsets) {}

  /// The leaf's range of the coefficient vector.
  /// @throws utility::RuntimeError "LeafDofs box <id> not found: " and all leaves with sources,
  ///   separated by blanks
  [[nodiscard]] tree::ObjectRange of(bits::Morton leaf) const;

 private:
  const LeafElements* elements_;
  std::span<const u64> dofOffsets_;
};

}  // namespace velmo::evaluator
