#include "grid/XyzReader.hpp"

#include <algorithm>
#include <istream>

#include "grid/LineScanner.hpp"
#include "grid/SkipComments.hpp"
#include "io/Types.hpp"

namespace velmo::grid {
namespace {

/// Points to make room for before any is read: a count in a file is not yet a promise.
constexpr u64 kMaxTrustedPoints = u64{1} << 20;

}  // namespace

void readXyz(std::istream& stream, std::vector<double>& coordinates) {
  stream.exceptions(std::ios_base::failbit);
  LineScanner scanner(stream);
  skipComments(stream);
  const u64 numPoints = scanner.nextUnsigned();
  scanner.discardLine();
  skipComments(stream);

  coordinates.clear();
  coordinates.reserve(3 * std::min(numPoints, kMaxTrustedPoints));
  for (u64 point = 0; point < numPoints; ++point) {
    for (int axis = 0; axis < 3; ++axis) coordinates.push_back(scanner.nextDouble());
    scanner.discardLine();
    skipComments(stream);
  }
}

}  // namespace velmo::grid
