#include "grid/ElementTypes.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "io/Exception.hpp"
#include "support/ExpectThrow.hpp"

namespace velmo::grid {
namespace {

using test::expectThrow;

constexpr u64 kCodes[] = {0,   102, 103, 104, 203, 206, 210, 304, 308, 309, 316, 404, 410, 420, 508,
                          520, 527, 532, 564, 606, 615, 618, 626, 640, 705, 713, 714, 725, 730};

constexpr const char* kShapeNames[] = {"",    "Segment", "Tria",  "Quad",
                                       "Tet", "Hex",     "Prism", "Pyramid"};

TEST(ElementTypes, PropertiesOfEachCodeFitTogether) {
  for (const u64 code : kCodes) {
    SCOPED_TRACE(code);
    const topo::ReferenceType shape = referenceTypeOf(code);
    const u64 base = linearBaseOf(code);
    const std::string name = nameOf(code);

    EXPECT_EQ(numNodesOf(code), code == 0 ? 1 : code % 100);
    EXPECT_EQ(dimensionOf(code), topo::dimension(shape));
    EXPECT_EQ(numNodesOf(base), topo::numVertices(shape));
    EXPECT_EQ(orderOf(base), code == 0 ? 0 : 1);
    EXPECT_EQ(linearBaseOf(base), base);
    EXPECT_EQ(name, code == 0
                        ? "Point"
                        : std::string(kShapeNames[code / 100]) + std::to_string(numNodesOf(code)));
    EXPECT_EQ(elementTypeFromWord(name), code);
    EXPECT_EQ(elementTypeFromWord(std::to_string(code)), code);
  }
}

TEST(ElementTypes, TheTwelveNodeQuadrilateralHasOnlyAName) {
  const std::string refusal = "velmo::grid::detail_::applyToEets: must not reach this point (";

  EXPECT_EQ(elementTypeFromWord("Quad12"), 312);
  EXPECT_EQ(elementTypeFromWord("312"), 312);
  EXPECT_EQ(nameOf(999), "999");
  expectThrow<std::runtime_error>([] { (void)orderOf(312); }, refusal + "Quad12)");
  expectThrow<std::runtime_error>([] { (void)numNodesOf(999); }, refusal + "999)");
}

TEST(ElementTypes, OnlyTheExactWordsAreKnown) {
  for (const std::string word : {"", "tria3", "Tria", "0203", "+203", "203 ", "00", "204", "203x"})
    expectThrow<utility::RuntimeError>([&] { (void)elementTypeFromWord(word); },
                                       "Failed to identify the ET: " + word);
}

}  // namespace
}  // namespace velmo::grid
