#pragma once

#include "linalg/MatrixView.hpp"

namespace velmo::linalg {

/// Replaces the square matrix A by its inverse, by LU factorisation with row pivoting.
///
/// @throws utility::RuntimeError "Matrix is not square!"
/// @throws std::runtime_error "LU decomposition failed with: <info>" for a singular matrix, with
/// the
///         number of the first zero pivot, counted from 1; "Inverse computation failed with:
///         <info>"
void invert(MatrixView<double> A);

}  // namespace velmo::linalg
