#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "grid/GridData.hpp"

namespace orvanta {

/// The file of a table: the base name with ".csv" behind it.
[[nodiscard]] std::filesystem::path resultPathOf(const std::string& basename);

/// Writes the table of all points with potential and field to the file of `basename`: a header
/// line, then a row per point in input order with x, y, z, the potential and the three components
/// of the field, in the format {:> .17E}, separated by commas. A double read back from it is the
/// same. Rows are formatted by the pool's threads and written in order while others are formatted;
/// 460 KB of text per thread are kept.
///
/// A file that can't be opened or written is ignored silently.
///
/// @param potential shape (numNodes)
/// @param field     shape (numNodes, 3): the gradient of the potential, not its negative
/// @return the path of the file
/// @throws std::out_of_range "invalid vector subscript" for lists shorter than the points
std::filesystem::path writeResults(const std::string& basename, const velmo::grid::GridData& points,
                                   std::span<const double> potential,
                                   std::span<const double> field);

/// Reports the ranges of the potential and of each component of the field, and the greatest
/// magnitude of the field, on channel `out`. NaN values are ignored; without any other values a
/// range runs from the largest double to the smallest.
///
/// @param potential shape (numPoints)
/// @param field     shape (numPoints, 3)
void reportExtrema(std::span<const double> potential, std::span<const double> field);

}  // namespace orvanta
