#include "sparse/Assemble.hpp"

#include <algorithm>
#include <numeric>
#include <span>
#include <utility>

#include "linalg/MatrixView.hpp"

namespace velmo::sparse {
namespace {

/// Stable counting sort by row.
std::vector<Triple> sortedByRow(u64 numRows, std::vector<Triple> triples) {
  if (std::ranges::is_sorted(triples, {}, &Triple::row)) return triples;
  std::vector<u64> places(numRows + 1);
  for (const Triple& triple : triples) ++places[triple.row + 1];
  std::inclusive_scan(places.begin(), places.end(), places.begin());
  std::vector<Triple> sorted(triples.size());
  for (const Triple& triple : triples) sorted[places[triple.row]++] = triple;
  return sorted;
}

/// Sorts by row, then column, and keeps the last of triples with equal indices.
std::vector<Triple> sortedTriples(u64 numRows, std::vector<Triple> triples) {
  triples = sortedByRow(numRows, std::move(triples));
  auto kept = triples.begin();
  for (auto row = triples.begin(); row != triples.end();) {
    const auto rowEnd =
        std::find_if(row, triples.end(), [&](const Triple& t) { return t.row != row->row; });
    if (rowEnd - row > 1)  // the rows of a transfer have one entry, which needs no sort
      std::ranges::stable_sort(row, rowEnd, {}, &Triple::col);
    for (; row != rowEnd; ++row) {
      const bool last = row + 1 == rowEnd || (row + 1)->col != row->col;
      if (last) *kept++ = *row;
    }
  }
  triples.erase(kept, triples.end());
  return triples;
}

}  // namespace

csr::ParMatrix<double> assemble(IndexLayout rows, IndexLayout cols, std::vector<Triple> triples) {
  for (const Triple& triple : triples) {  // an index outside has no owner, which is the message
    if (triple.row >= rows.globalSize()) static_cast<void>(rows.ownerOf(triple.row));
    if (triple.col >= cols.globalSize()) static_cast<void>(cols.ownerOf(triple.col));
  }
  triples = sortedTriples(rows.globalSize(), std::move(triples));
  std::vector<u64> rowIds;
  std::vector<u64> colIds;
  rowIds.reserve(triples.size());
  colIds.reserve(triples.size());
  for (const Triple& triple : triples) {
    rowIds.push_back(triple.row);
    colIds.push_back(triple.col);
  }

  csr::ParMatrix<double> matrix(std::move(rows), std::move(cols));
  matrix.allocate(rowIds, colIds);
  for (const auto& [row, col, value] : triples)
    matrix.addValues(std::span(&row, 1), std::span(&col, 1),
                     linalg::MatrixView<const double>(&value, 1, 1));
  return matrix;
}

}  // namespace velmo::sparse
