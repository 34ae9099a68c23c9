#pragma once

#include <vector>

#include "io/Types.hpp"
#include "sparse/IndexLayout.hpp"
#include "sparse/ParMatrix.hpp"

namespace velmo::sparse {

/// One matrix entry.
struct Triple {
  u64 row;  ///< global index
  u64 col;  ///< global index
  double value;
};

/// The matrix with these entries; of triples with equal indices the last one holds. Time and memory
/// are linear in the number of triples and rows as long as rows are short: a counting sort by row,
/// then a stable sort within each row of more than one entry. Main thread only.
///
/// @throws utility::RuntimeError what IndexLayout throws for indices outside the layouts
[[nodiscard]] csr::ParMatrix<double> assemble(IndexLayout rows, IndexLayout cols,
                                              std::vector<Triple> triples);

}  // namespace velmo::sparse
