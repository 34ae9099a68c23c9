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

namespace velmo::fmm {

/// What a box without lists reads as its lists. Nobody may add to it: who wants to add to a list
/// must first have given the box one of its own.
inline std::vector<bits::Morton> EmptyList;

/// A list of a box, read as identifiers. They are looked up from the positions, not stored again.
class MortonList {
 public:
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

  MortonList(std::span<const tree::BoxIndex> positions, const bits::Morton* ids) noexcept
      : positions_(positions), ids_(ids) {}

  [[nodiscard]] std::size_t size() const noexcept { return positions_.size(); }
  [[nodiscard]] bool empty() const noexcept { return positions_.empty(); }
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

/// Lists of all boxes with the identifiers that they refer to.
struct ListTable {
  std::span<const bits::Morton> ids;  ///< of all boxes; the tree owns them
  tree::InteractionLists lists;
};

template <std::size_t Dim>
class Orthant;

/// Orthant with its interaction lists, each sorted. The lists lie in the tree; they are empty until
/// the tree has made them.
template <>
class Orthant<3> : public tree::Orthant<3> {
 public:
  Orthant() = default;
  explicit Orthant(const tree::Orthant<3>& orthant) : tree::Orthant<3>(orthant) {}

  /// The lists as identifiers, for whoever asks about single boxes.
  /// @throws utility::RuntimeError "EmptyList has been resized!!!"
  [[nodiscard]] MortonList listU() const { return identifiers_(tree::ListKind::U); }
  [[nodiscard]] MortonList listV() const { return identifiers_(tree::ListKind::V); }
  [[nodiscard]] MortonList listW() const { return identifiers_(tree::ListKind::W); }
  [[nodiscard]] MortonList listX() const { return identifiers_(tree::ListKind::X); }

  /// A list as positions in the tree's boxes, in the same order: the form that the passes walk.
  [[nodiscard]] std::span<const tree::BoxIndex> positions(tree::ListKind kind) const noexcept {
    if (table_ == nullptr) return {};
    return table_->lists[kind].of(index_);
  }

  /// Gives the box its place in the tree's lists; `table` must outlive it.
  void setLists(const ListTable* table, tree::BoxIndex index) noexcept {
    table_ = table;
    index_ = index;
  }

 private:
  [[nodiscard]] MortonList identifiers_(tree::ListKind kind) const {
    if (!EmptyList.empty()) throw utility::RuntimeError("EmptyList has been resized!!!");
    return {positions(kind), table_ == nullptr ? nullptr : table_->ids.data()};
  }

  const ListTable* table_ = nullptr;
  tree::BoxIndex index_ = tree::kNoBox;
};

template <std::size_t Dim>
class Box;

/// Orthant with its expansions: one row per coefficient, one column per density column. The views
/// point into storage of the evaluator.
template <>
class Box<3> : public Orthant<3> {
 public:
  using Orthant<3>::Orthant;

  linalg::MatrixView<std::complex<double>> multipole;
  linalg::MatrixView<std::complex<double>> local;
};

}  // namespace velmo::fmm
