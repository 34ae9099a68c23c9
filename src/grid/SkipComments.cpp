#include "grid/SkipComments.hpp"

#include <istream>
#include <limits>

namespace velmo::grid {

std::istream& skipComments(std::istream& stream) {
  while (stream.good()) {
    const auto next = stream.peek();
    if (next != '#' && next != '\n' && next != '\r') break;
    stream.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  return stream;
}

}  // namespace velmo::grid
