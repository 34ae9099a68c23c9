#include "grid/PointReaders.hpp"

#include <algorithm>
#include <istream>
#include <string>
#include <vector>

#include "grid/ElementTypes.hpp"
#include "grid/LineScanner.hpp"
#include "grid/UsualPoints.hpp"
#include "io/CheckedAccess.hpp"
#include "io/Exception.hpp"
#include "io/Progress.hpp"
#include "io/Types.hpp"

namespace velmo::grid {
namespace {

/// Entries to make room for before any is read: a count in a file is not yet a promise.
constexpr u64 kMaxTrustedSize = u64{1} << 20;

struct Header {
  u64 worldDim;
  u64 numNodes;
  u64 numElements;
  u64 numIncidences;
};

/// The words of a line, separated by blanks.
std::vector<std::string> splitAtBlanks(const std::string& line) {
  std::vector<std::string> words;
  std::size_t first = line.find_first_not_of(' ');
  while (first != std::string::npos) {
    const std::size_t last = std::min(line.find(' ', first), line.size());
    words.push_back(line.substr(first, last - first));
    first = line.find_first_not_of(' ', last);
  }
  return words;
}

Header readHeader(std::istream& stream) {
  const std::string line = LineScanner(stream).nextLine();
  const std::vector<std::string> words = splitAtBlanks(line);
  if (words.size() < 4) throw utility::RuntimeError("Expected four words here -> " + line);
  for (std::size_t i = 0; i < 4; ++i)
    if (words[i].find_first_not_of("0123456789") != std::string::npos)
      throw utility::RuntimeError("Expected a number, got: " + words[i]);

  const auto count = [&words](std::size_t i) { return static_cast<u64>(utility::toInt(words[i])); };
  return {count(0), count(1), count(2), count(3)};
}

void readNodes(std::istream& stream, GridData& grid) {
  LineScanner scanner(stream);
  grid.nodeIds.reserve(std::min(grid.numNodes, kMaxTrustedSize));
  grid.coordinates.reserve(std::min(grid.numNodes * grid.worldDim, kMaxTrustedSize));
  for (u64 node = 0; node < grid.numNodes; ++node) {
    skipComments(stream);
    grid.nodeIds.push_back(scanner.nextUnsigned());
    for (u64 axis = 0; axis < grid.worldDim; ++axis)
      grid.coordinates.push_back(scanner.nextDouble());
    scanner.discardLine();
  }
}

void readElements(std::istream& stream, u64 numIncidences, GridData& grid) {
  LineScanner scanner(stream);
  const u64 room = std::min(grid.numElements, kMaxTrustedSize);
  grid.elementTypes.reserve(room);
  grid.elementTags.reserve(room);
  grid.offsets.reserve(room + 1);
  grid.connectivity.reserve(std::min(numIncidences, kMaxTrustedSize));
  for (u64 element = 0; element < grid.numElements; ++element) {
    skipComments(stream);
    const u64 type = elementTypeFromWord(scanner.nextWord());
    const u64 count = numNodesOf(type);
    if (count > numIncidences - grid.connectivity.size())
      throw utility::RuntimeError("Input file predicted smaller size of incidence table: " +
                                  std::to_string(numIncidences));
    grid.elementTypes.push_back(type);
    grid.elementTags.push_back(scanner.nextUnsigned());
    for (u64 i = 0; i < count; ++i) grid.connectivity.push_back(scanner.nextUnsigned());
    grid.offsets.push_back(grid.connectivity.size());
    scanner.discardLine();
  }
  if (grid.connectivity.size() < numIncidences)
    io::printMessage("(WW) Input file predicted larger size of incidence table\n");
}

}  // namespace

std::istream& readMesh(std::istream& stream, GridData& grid) {
  stream.exceptions(std::ios_base::failbit);
  skipComments(stream);
  const Header header = readHeader(stream);
  grid.worldDim = header.worldDim;
  grid.numNodes = header.numNodes;
  grid.numElements = header.numElements;

  skipComments(stream);
  readNodes(stream, grid);
  skipComments(stream);
  readElements(stream, header.numIncidences, grid);
  return stream;
}

XyzRest readXyz(std::istream& stream, std::vector<double>& coordinates) {
  stream.exceptions(std::ios_base::failbit);
  LineScanner scanner(stream);
  skipComments(stream);
  const u64 numPoints = scanner.nextUnsigned();
  XyzRest rest{.behindCount = scanner.rest()};
  scanner.discardLine();
  skipComments(stream);

  coordinates.clear();
  takeUsualPoints(stream, numPoints, coordinates);
  skipComments(stream);
  for (u64 point = coordinates.size() / 3; point < numPoints; ++point) {
    for (int axis = 0; axis < 3; ++axis) coordinates.push_back(scanner.nextDouble());
    scanner.discardLine();
    skipComments(stream);
  }
  if (stream.good()) stream >> std::ws;
  rest.hasMoreLines = stream.good() && stream.peek() != '#';
  return rest;
}

}  // namespace velmo::grid
