#include <cstdint>
#include <cstdlib>
#include <ios>
#include <sstream>
#include <string>
#include <vector>

#include "grid/GridData.hpp"
#include "grid/PointReaders.hpp"

/// A list of points is read whole or ends in the stream's failure.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream stream(std::string(reinterpret_cast<const char*>(data), size));
  std::vector<double> coordinates;
  try {
    velmo::grid::readXyz(stream, coordinates);
  } catch (const std::ios_base::failure&) {
    return 0;
  }
  const auto cloud = velmo::grid::makePointCloud(coordinates, coordinates.size() / 3);
  if (3 * cloud.numNodes != coordinates.size()) std::abort();
  return 0;
}
