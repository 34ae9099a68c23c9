#include "sparse/ParMatrix.hpp"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <string>
#include <utility>

#include "comm/Comm.hpp"
#include "io/Exception.hpp"
#include "sparse/ParVec.hpp"

namespace velmo::sparse {
namespace {

/// The owned or the remote part of an index list.
struct Selection {
  std::vector<u64> positions;  ///< places in the list
  std::vector<u64> locals;     ///< their local indices
};

struct Split {
  Selection owned;
  Selection remote;
};

Split splitByOwnership(std::span<const u64> ids, const IndexLayout& layout,
                       const std::vector<u64>& nonLocal, const char* failure) {
  Split split;
  for (u64 i = 0; i < ids.size(); ++i) {
    if (layout.owns(ids[i])) {
      split.owned.positions.push_back(i);
      split.owned.locals.push_back(ids[i] - layout.ownedBegin());
      continue;
    }
    const auto found = std::lower_bound(nonLocal.begin(), nonLocal.end(), ids[i]);
    if (found == nonLocal.end() || *found != ids[i])
      throw utility::RuntimeError(failure + std::to_string(ids[i]));
    split.remote.positions.push_back(i);
    split.remote.locals.push_back(static_cast<u64>(found - nonLocal.begin()));
  }
  return split;
}

/// The ids in `ids` that this rank doesn't own, ascending, each once.
std::vector<u64> foreignIds(std::span<const u64> ids, const IndexLayout& layout) {
  std::vector<u64> foreign;
  std::ranges::copy_if(ids, std::back_inserter(foreign), [&](u64 id) { return !layout.owns(id); });
  std::ranges::sort(foreign);
  foreign.erase(std::unique(foreign.begin(), foreign.end()), foreign.end());
  return foreign;
}

u64 positionOf(const std::vector<u64>& ids, u64 id) {
  return static_cast<u64>(std::lower_bound(ids.begin(), ids.end(), id) - ids.begin());
}

/// Marks the input of a product as scattered while the product runs.
void beginProduct(ParVec& in) {
  if (in.scattered) throw utility::RuntimeError("ParVec is already scattered");
  in.scattered = true;
}

void endProduct(ParVec& in) {
  in.remote.zero();
  in.scattered = false;
}

/// Puts the entries for `ids`, which other ranks own, into the remote part of a result.
void setRemote(ParVec& out, const std::vector<u64>& ids, const std::vector<double>& entries) {
  out.remote.setIds(ids);
  for (u64 i = 0; i < ids.size(); ++i) out.add(ids[i], entries[i]);
  out.scattered = true;
}

template <class T>
linalg::MatrixView<T, -1, 1, 1> column(std::vector<T>& values) {
  return {values.data(), values.size()};
}

}  // namespace

template <class T>
ParMatrixBase<T>::ParMatrixBase(IndexLayout rows, IndexLayout cols)
    : rowLayout(std::move(rows)), colLayout(std::move(cols)) {
  if (rowLayout.comm != colLayout.comm)
    throw utility::RuntimeError("Using different communicators not supported");
}

namespace csr {

template <class T>
ParMatrix<T>::ParMatrix(IndexLayout rows, IndexLayout cols)
    : ParMatrixBase<T>(std::move(rows), std::move(cols)),
      rowPlan(this->rowLayout, this->nonLocalRows),
      colPlan(this->colLayout, this->nonLocalCols) {}

template <class T>
void ParMatrix<T>::allocate(std::span<const u64> rows, std::span<const u64> cols) {
  assert(rows.size() == cols.size());
  this->nonLocalRows = foreignIds(rows, this->rowLayout);
  this->nonLocalCols = foreignIds(cols, this->colLayout);
  rowPlan = ExchangePlan(this->rowLayout, this->nonLocalRows);
  colPlan = ExchangePlan(this->colLayout, this->nonLocalCols);
  hasNoRemote = this->nonLocalRows.empty() && this->nonLocalCols.empty();

  const u64 ownedRows = this->rowLayout.ownedSize();
  const u64 remoteRows = this->nonLocalRows.size();
  std::array<std::vector<u64>, 4> rowSizes{std::vector<u64>(ownedRows), std::vector<u64>(ownedRows),
                                           std::vector<u64>(remoteRows),
                                           std::vector<u64>(remoteRows)};
  for (u64 k = 0; k < rows.size(); ++k) {
    const bool ownedRow = this->rowLayout.owns(rows[k]);
    const bool ownedCol = this->colLayout.owns(cols[k]);
    const u64 row =
        ownedRow ? rows[k] - this->rowLayout.ownedBegin() : positionOf(this->nonLocalRows, rows[k]);
    ++rowSizes[(ownedRow ? 0U : 2U) + (ownedCol ? 0U : 1U)][row];
  }
  const u64 ownedCols = this->colLayout.ownedSize();
  const u64 remoteCols = this->nonLocalCols.size();
  for (u64 b = 0; b < 4; ++b) blocks[b].allocate(rowSizes[b], b % 2 == 0 ? ownedCols : remoteCols);
}

template <class T>
void ParMatrix<T>::addValues(std::span<const u64> rows, std::span<const u64> cols,
                             linalg::MatrixView<const T, -1, -1, 1> block) {
  const auto allOwned = [](std::span<const u64> ids, const IndexLayout& layout) {
    return std::ranges::all_of(ids, [&](u64 id) { return layout.owns(id); });
  };
  // On the first rank global and local indices are the same and need no copies.
  if (this->rowLayout.ownedBegin() == 0 && this->colLayout.ownedBegin() == 0 &&
      allOwned(rows, this->rowLayout) && allOwned(cols, this->colLayout)) {
    blocks[0].addValues(rows, cols, block, atomicAdd);
    return;
  }

  const Split rowSplit =
      splitByOwnership(rows, this->rowLayout, this->nonLocalRows, "Failed to find non-local row: ");
  const Split colSplit =
      splitByOwnership(cols, this->colLayout, this->nonLocalCols, "Failed to find non-local col: ");
  std::vector<T> part;
  const auto addPart = [&](Matrix<T>& target, const Selection& r, const Selection& c) {
    part.clear();
    for (const u64 j : c.positions)
      for (const u64 i : r.positions) part.push_back(block(i, j));
    target.addValues(r.locals, c.locals, {part.data(), r.locals.size(), c.locals.size()},
                     atomicAdd);
  };
  addPart(blocks[0], rowSplit.owned, colSplit.owned);
  addPart(blocks[1], rowSplit.owned, colSplit.remote);
  addPart(blocks[2], rowSplit.remote, colSplit.owned);
  addPart(blocks[3], rowSplit.remote, colSplit.remote);
}

template <class T>
void ParMatrix<T>::matMult(ParVec& in, ParVec& out, T alpha) const {
  beginProduct(in);
  const auto remoteIn = column(in.remote.values);
  blocks[0].matMultAdd(in.local, out.local, alpha);
  blocks[1].matMultAdd(remoteIn, out.local, alpha);
  if (!hasNoRemote) {
    std::vector<T> entries(this->nonLocalRows.size());
    blocks[2].matMultAdd(in.local, column(entries), alpha);
    blocks[3].matMultAdd(remoteIn, column(entries), alpha);
    setRemote(out, this->nonLocalRows, entries);
  }
  endProduct(in);
}

template <class T>
void ParMatrix<T>::multiplyTransposed_(ParVec& in, ParVec& out, T alpha, bool conjugate) const {
  beginProduct(in);
  const auto remoteIn = column(in.remote.values);
  blocks[0].matMultTransAdd(in.local, out.local, alpha, conjugate);
  blocks[2].matMultTransAdd(remoteIn, out.local, alpha, conjugate);
  if (!hasNoRemote) {
    std::vector<T> entries(this->nonLocalCols.size());
    blocks[1].matMultTransAdd(in.local, column(entries), alpha, conjugate);
    blocks[3].matMultTransAdd(remoteIn, column(entries), alpha, conjugate);
    setRemote(out, this->nonLocalCols, entries);
  }
  endProduct(in);
}

template <class T>
void ParMatrix<T>::matMultTrans(ParVec& in, ParVec& out, T alpha) const {
  multiplyTransposed_(in, out, alpha, false);
}

template <class T>
void ParMatrix<T>::matMultConjTrans(ParVec& in, ParVec& out, T alpha) const {
  multiplyTransposed_(in, out, alpha, true);
}

template <class T>
void ParMatrix<T>::getDiagonal(linalg::MatrixView<T, -1, 1, 1> out) const {
  blocks[0].getDiagonal(out);

  std::vector<T> entries(rowPlan.ids.size());
  for (u64 i = 0; i < entries.size(); ++i) {
    const u64 id = rowPlan.ids[i];
    const u64 col = positionOf(this->nonLocalCols, id);
    if (col == this->nonLocalCols.size() || this->nonLocalCols[col] != id) continue;
    const auto row = blocks[3].getRow(positionOf(this->nonLocalRows, id));
    const auto found = std::ranges::lower_bound(row.colIds, col);
    if (found != row.colIds.end() && *found == col)
      entries[i] = row.values[static_cast<u64>(found - row.colIds.begin())];
  }
  const auto received = comm::exchangeRuns<T>(this->rowLayout.comm, entries, rowPlan.sendCounts);
  for (u64 i = 0; i < received.buffer.size(); ++i)
    out[rowPlan.requestedIds[i] - this->rowLayout.ownedBegin()] += received.buffer[i];
}

}  // namespace csr

template class ParMatrixBase<double>;
template class csr::ParMatrix<double>;

}  // namespace velmo::sparse
