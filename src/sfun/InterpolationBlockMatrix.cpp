#include "sfun/InterpolationBlockMatrix.hpp"

#include <algorithm>

#include "io/Exception.hpp"
#include "linalg/Factorisations.hpp"

namespace velmo::sfun {

void InterpolationBlockMatrix::insert(u64 position, linalg::MatrixView<const double> block) {
  if (position >= blocks_.size()) blocks_.resize(position + 1);
  Block& place = blocks_[position];
  if (!place.values.empty())
    throw utility::RuntimeError(
        "velmo::sfun::InterpolationBlockMatrix::insert:Matrix block already exists!");
  place = {{block.values().begin(), block.values().end()}, block.rows, block.cols};
  size_ += block.rows;
}

void InterpolationBlockMatrix::finish() {
  for (Block& block : blocks_)
    if (!block.values.empty())
      linalg::invert(linalg::MatrixView<double>(block.values.data(), block.rows, block.cols));
  finished_ = true;
}

void InterpolationBlockMatrix::solve(std::span<const double> rhs, std::span<double> sol) const {
  if (!finished_)
    throw utility::RuntimeError("InterpolationBlockMatrix::solve:finish() has not been called!");
  if (rhs.size() < size_)
    throw utility::RuntimeError("InterpolationBlockMatrix::solve:Rhs is insufficient!");
  if (sol.size() < size_)
    throw utility::RuntimeError("InterpolationBlockMatrix::solve:Sol is insufficient!");
  u64 first = 0;
  for (const Block& block : blocks_) {
    std::fill_n(sol.data() + first, block.rows, 0.0);
    for (u64 j = 0; j < block.cols; ++j)
      for (u64 i = 0; i < block.rows; ++i)
        sol[first + i] += block.values[j * block.rows + i] * rhs[first + j];
    first += block.rows;
  }
}

}  // namespace velmo::sfun
