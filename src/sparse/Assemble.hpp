#pragma once

#include <vector>

#include "io/Types.hpp"
#include "sparse/IndexLayout.hpp"
#include "sparse/ParMatrix.hpp"

namespace velmo::sparse {

/// One matrix entry at global indices.
struct Triple {
  u64 row;
  u64 col;
  double value;
};

/// The matrix with these entries; of triples with equal indices the last one holds. Time and memory
/// are linear in the number of triples and rows as long as rows are short.
/// @throws utility::RuntimeError what IndexLayout throws for indices outside the layouts
[[nodiscard]] csr::ParMatrix<double> assemble(IndexLayout rows, IndexLayout cols,
                                              std::vector<Triple> triples);

}  // namespace velmo::sparse
