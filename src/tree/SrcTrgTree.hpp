#pragma once

#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "bits/MortonID.hpp"
#include "io/Types.hpp"
#include "tree/Box.hpp"
#include "tree/BoxLinks.hpp"
#include "tree/Partition.hpp"

namespace velmo::tree {

/// A range of a sorted object list: the objects first to first + count - 1.
struct ObjectRange {
  u64 first = 0;
  u64 count = 0;

  friend bool operator==(const ObjectRange&, const ObjectRange&) = default;
};

template <class BoxType>
class SrcTrgTree;

/// One octree over sources and targets. Boxes are sorted by plain value, so level by level.
/// Refinement counts both kinds of objects together, so a leaf may have either or both.
///
/// Made in three steps: the constructor builds tables and leaf lists, mark() finds out which boxes
/// have sources and targets, makeLists() builds the interaction lists. After that only the
/// expansions of the boxes change, and all const operations may run on many threads. All views stay
/// valid after a move; it can't be copied.
///
/// Boxes are named by identifier or by position. Passes use positions; looking up an identifier
/// takes a bisection and is meant for queries about single boxes.
template <>
class SrcTrgTree<fmm::Box<3>> {
 public:
  /// A tree without boxes, whose levels and leaves can't be queried.
  SrcTrgTree() = default;

  /// @param orthants sorted by plain value, every box with its parent
  /// @throws utility::RuntimeError "Level <L> has no orthant ", and what makeBoxLinks throws
  SrcTrgTree(std::span<const Orthant<3>> orthants, Partition partition);

  /// Finds the sources and targets of all boxes and sets their bits.
  ///
  /// @param targets, sources level-21 identifiers, sorted by plain value; together they are the
  ///        tree's objects, and the tree keeps them
  /// @throws utility::RuntimeError "Found more targets than objects in leaf", for either kind
  void mark(std::vector<bits::Morton> targets, std::vector<bits::Morton> sources);

  /// Builds the interaction lists of all boxes and gives every box its place in them.
  /// @pre mark() has run
  void makeLists();

  /// Position of a box in `boxes`.
  /// @throws utility::RuntimeError "Lookup tables has not been created"
  /// @throws std::out_of_range     "invalid unordered_map<K, T> key"
  [[nodiscard]] BoxIndex index(bits::Morton id) const;

  /// Position of a box, nothing if there is no such box.
  /// @throws utility::RuntimeError "Lookup tables has not been created"
  [[nodiscard]] std::optional<BoxIndex> find(bits::Morton id) const;

  /// The box itself; throws as index() does.
  [[nodiscard]] const fmm::Box<3>& at(bits::Morton id) const { return boxes[index(id)]; }
  [[nodiscard]] fmm::Box<3>& at(bits::Morton id) { return boxes[index(id)]; }

  /// First box of each level, then the number of boxes; shape (numLevels + 1).
  /// @throws utility::RuntimeError "Level begins have not been created"
  [[nodiscard]] std::span<const u64> levelBegins() const;

  /// Positions of all leaves, ascending.
  /// @throws utility::RuntimeError "Leaf positions have not been created"
  [[nodiscard]] std::span<const BoxIndex> leafPositions() const;

  /// Positions of the leaves that aren't halo boxes, ascending.
  /// @throws utility::RuntimeError "Non-halo leaf positions have not been created"
  [[nodiscard]] std::span<const BoxIndex> nonHaloLeafPositions() const;

  /// Identifier of the first source and number of sources of a leaf that has any.
  /// @throws utility::RuntimeError "Failed to find source datum for ID <id>"
  [[nodiscard]] std::pair<bits::Morton, u64> sourceDatum(bits::Morton id) const;

  /// Identifier of the first target and number of targets of a leaf that has any.
  /// @throws utility::RuntimeError "Failed to find target datum for ID <id>"
  [[nodiscard]] std::pair<bits::Morton, u64> targetDatum(bits::Morton id) const;

  /// Parents, children and levels of the boxes, by position.
  [[nodiscard]] const BoxLinks& links() const noexcept { return links_; }
  /// The range of the curve that belongs to the process.
  [[nodiscard]] const Partition& partition() const noexcept { return partition_; }

  /// Identifiers of the sorted objects of one kind, of level 21, ascending.
  [[nodiscard]] std::span<const bits::Morton> sourceIds() const noexcept { return sourceIds_; }
  [[nodiscard]] std::span<const bits::Morton> targetIds() const noexcept { return targetIds_; }

  /// For each box, leaf or not, the range of its objects in the sorted list of their kind. The
  /// first position of an empty range is 0.
  [[nodiscard]] std::span<const ObjectRange> sourceRanges() const noexcept { return sourceRanges_; }
  [[nodiscard]] std::span<const ObjectRange> targetRanges() const noexcept { return targetRanges_; }

  std::vector<fmm::Box<3>> boxes;  ///< by plain value; only expansions may be changed
  u64 numLevels = 0;               ///< deepest level plus 1; 0 for no boxes

 private:
  /// Sets numLevels and levelBegins_ from the sorted boxes.
  void findLevels_();
  /// Lists the leaves, which can be queried from then on.
  void findLeaves_();
  /// Ranges of all boxes in a sorted list of objects.
  [[nodiscard]] std::vector<ObjectRange> rangesOf_(std::span<const bits::Morton> ids) const;
  void setBits_();

  BoxLinks links_;
  std::vector<u64> levelBegins_;
  std::vector<BoxIndex> leafPositions_;
  std::vector<BoxIndex> nonHaloLeafPositions_;
  bool leafPositionsReady_ = false;
  bool nonHaloLeafPositionsReady_ = false;
  Partition partition_;
  std::vector<bits::Morton> sourceIds_;
  std::vector<bits::Morton> targetIds_;
  std::vector<ObjectRange> sourceRanges_;
  std::vector<ObjectRange> targetRanges_;
  /// Null before makeLists().
  std::unique_ptr<fmm::ListTable> listTable_;  ///< at a fixed address: the boxes point to it
};

}  // namespace velmo::tree
