#pragma once

#include <complex>
#include <cstddef>
#include <span>
#include <vector>

#include "bits/MortonID.hpp"
#include "io/Exception.hpp"
#include "linalg/MatrixView.hpp"
#include "tree/InteractionLists.hpp"
#include "tree/Orthant.hpp"

/// The boxes of the multipole method: nodes of the octree with interaction lists and expansions.
/// Lists and expansions are stored elsewhere, in long arrays, to which a box refers. Many threads
/// may read boxes, lists and expansions; a pass that writes expansions gives each box to one
/// thread.
namespace velmo::fmm {

/// The list that a box without lists returns. It must stay empty: to add to a list, first give the
/// box a list of its own.
inline std::vector<bits::Morton> EmptyList;

/// A list of a box, read as identifiers, ascending by plain value. They are looked up by position,
/// not stored again. A view, valid as long as the tree that holds the list; reading is safe from
/// any thread.
class MortonList {
 public:
  /// Forward iterator over the identifiers, by value. Iterators of the same list can be compared.
  class Iterator {
   public:
    using value_type = bits::Morton;
    using difference_type = std::ptrdiff_t;

    Iterator() = default;
    Iterator(const tree::BoxIndex* position, const bits::Morton* ids) noexcept
        : position_(position), ids_(ids) {}

    [[nodiscard]] bits::Morton operator*() const noexcept { return ids_[*position_]; }
    Iterator& operator++() noexcept {
      ++position_;
      return *this;
    }
    Iterator operator++(int) noexcept {
      Iterator before = *this;
      ++position_;
      return before;
    }
    friend bool operator==(const Iterator& a, const Iterator& b) noexcept {
      return a.position_ == b.position_;
    }

   private:
    const tree::BoxIndex* position_ = nullptr;
    const bits::Morton* ids_ = nullptr;
  };

  /// @param positions of the list's boxes in the list of all boxes
  /// @param ids       of all boxes; may be null for an empty list
  MortonList(std::span<const tree::BoxIndex> positions, const bits::Morton* ids) noexcept
      : positions_(positions), ids_(ids) {}

  [[nodiscard]] std::size_t size() const noexcept { return positions_.size(); }
  [[nodiscard]] bool empty() const noexcept { return positions_.empty(); }
  /// Identifier `i`. @pre i < size(), not checked
  [[nodiscard]] bits::Morton operator[](std::size_t i) const noexcept {
    return ids_[positions_[i]];
  }
  [[nodiscard]] Iterator begin() const noexcept { return {positions_.data(), ids_}; }
  [[nodiscard]] Iterator end() const noexcept {
    return {positions_.data() + positions_.size(), ids_};
  }

 private:
  std::span<const tree::BoxIndex> positions_;
  const bits::Morton* ids_;
};

/// Lists of all boxes with the identifiers that they refer to. One per tree, which owns it.
struct ListTable {
  std::span<const bits::Morton> ids;  ///< of all boxes, shape (boxes); the tree owns them
  tree::InteractionLists lists;
};

template <std::size_t Dim>
class Orthant;

/// Orthant with its interaction lists, each sorted. The tree owns the lists; they are empty until
/// the tree has built them, and don't change afterwards. tree::ListKind describes the four lists.
///
/// The box refers to its lists with two words, however long they are. A copy refers to the lists of
/// the same tree.
template <>
class Orthant<3> : public tree::Orthant<3> {
 public:
  Orthant() = default;
  explicit Orthant(const tree::Orthant<3>& orthant) : tree::Orthant<3>(orthant) {}

  /// The lists as identifiers, for queries about single boxes.
  /// @throws utility::RuntimeError "EmptyList has been resized!!!" if somebody has added to the
  ///   list that boxes without lists share
  ///
  /// Leaves near this leaf, itself included; empty for a box with children.
  [[nodiscard]] MortonList listU() const { return identifiers_(tree::ListKind::U); }
  /// Boxes of the same level, away from this box, whose parents are near its parent.
  [[nodiscard]] MortonList listV() const { return identifiers_(tree::ListKind::V); }
  /// Finer boxes away from this leaf whose parents are near it; empty for a box with children.
  [[nodiscard]] MortonList listW() const { return identifiers_(tree::ListKind::W); }
  /// Coarser leaves away from this box that are near its parent.
  [[nodiscard]] MortonList listX() const { return identifiers_(tree::ListKind::X); }

  /// A list as positions in the tree's boxes, in the same order; the passes use this form. The tree
  /// owns the array. Checks nothing and doesn't throw, so hot loops may call it.
  [[nodiscard]] std::span<const tree::BoxIndex> positions(tree::ListKind kind) const noexcept {
    if (table_ == nullptr) return {};
    return table_->lists[kind].of(index_);
  }

  /// Gives the box its place in the tree's lists; only for the tree.
  /// @param table must outlive the box and stay in place
  /// @param index position of the box in the tree
  void setLists(const ListTable* table, tree::BoxIndex index) noexcept {
    table_ = table;
    index_ = index;
  }

 private:
  [[nodiscard]] MortonList identifiers_(tree::ListKind kind) const {
    if (!EmptyList.empty()) throw utility::RuntimeError("EmptyList has been resized!!!");
    return {positions(kind), table_ == nullptr ? nullptr : table_->ids.data()};
  }

  const ListTable* table_ = nullptr;  ///< null until the tree has built its lists
  tree::BoxIndex index_ = tree::kNoBox;
};

template <std::size_t Dim>
class Box;

/// Orthant with its expansions about its centre: one row per coefficient, in triangular order, and
/// one column per density, column-major. Shape ((p + 1)(p + 2) / 2, number of densities).
///
/// The views point into storage of the evaluator, which sets them; they are empty before.
/// Expansions are those of the kernel 1 / |x - y| in the unit of the input, without the factor 1 /
/// (4 pi). Passes write different boxes on different threads.
template <>
class Box<3> : public Orthant<3> {
 public:
  using Orthant<3>::Orthant;

  /// Field of the box's sources at points far from the box.
  linalg::MatrixView<std::complex<double>> multipole;
  /// Field inside the box of sources that are far from it.
  linalg::MatrixView<std::complex<double>> local;
};

}  // namespace velmo::fmm
