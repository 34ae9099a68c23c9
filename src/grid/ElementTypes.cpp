#include "grid/ElementTypes.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>

#include "io/Exception.hpp"
#include "io/Format.hpp"

namespace velmo::grid {
namespace {

struct ElementType {
  u64 code;
  std::string_view name;
  u64 numNodes;
  u64 dimension;
  u64 order;
  u64 linearBase;
};

constexpr std::array<ElementType, 29> kElementTypes{{
    {0, "Point", 1, 0, 0, 0},          {102, "Segment2", 2, 1, 1, 102},
    {103, "Segment3", 3, 1, 2, 102},   {104, "Segment4", 4, 1, 3, 102},
    {203, "Tria3", 3, 2, 1, 203},      {206, "Tria6", 6, 2, 2, 203},
    {210, "Tria10", 10, 2, 3, 203},    {304, "Quad4", 4, 2, 1, 304},
    {308, "Quad8", 8, 2, 2, 304},      {309, "Quad9", 9, 2, 2, 304},
    {316, "Quad16", 16, 2, 3, 304},    {404, "Tet4", 4, 3, 1, 404},
    {410, "Tet10", 10, 3, 2, 404},     {420, "Tet20", 20, 3, 3, 404},
    {508, "Hex8", 8, 3, 1, 508},       {520, "Hex20", 20, 3, 2, 508},
    {527, "Hex27", 27, 3, 2, 508},     {532, "Hex32", 32, 3, 3, 508},
    {564, "Hex64", 64, 3, 3, 508},     {606, "Prism6", 6, 3, 1, 606},
    {615, "Prism15", 15, 3, 2, 606},   {618, "Prism18", 18, 3, 2, 606},
    {626, "Prism26", 26, 3, 3, 606},   {640, "Prism40", 40, 3, 3, 606},
    {705, "Pyramid5", 5, 3, 1, 705},   {713, "Pyramid13", 13, 3, 2, 705},
    {714, "Pyramid14", 14, 3, 2, 705}, {725, "Pyramid25", 25, 3, 3, 705},
    {730, "Pyramid30", 30, 3, 3, 705},
}};
static_assert(std::ranges::is_sorted(kElementTypes, {}, &ElementType::code));

/// The serendipity quadrilateral of order 3: files may contain it, but no computation supports it.
constexpr u64 kQuad12 = 312;
constexpr std::string_view kQuad12Name = "Quad12";

const ElementType* find(u64 code) noexcept {
  const auto* const found = std::ranges::lower_bound(kElementTypes, code, {}, &ElementType::code);
  return found != kElementTypes.end() && found->code == code ? found : nullptr;
}

const ElementType& propertiesOf(u64 code) {
  const ElementType* const type = find(code);
  if (type == nullptr)
    throw std::runtime_error("velmo::grid::detail_::applyToEets: must not reach this point (" +
                             nameOf(code) + ")");
  return *type;
}

}  // namespace

u64 numNodesOf(u64 code) { return propertiesOf(code).numNodes; }

u64 dimensionOf(u64 code) { return propertiesOf(code).dimension; }

u64 orderOf(u64 code) { return propertiesOf(code).order; }

u64 linearBaseOf(u64 code) { return propertiesOf(code).linearBase; }

topo::ReferenceType referenceTypeOf(u64 code) {
  // Codes and shapes are numbered in the same way: 0 the point, 1xx the line, up to 7xx the
  // pyramid.
  return static_cast<topo::ReferenceType>(propertiesOf(code).code / 100);
}

std::string nameOf(u64 code) {
  if (code == kQuad12) return std::string(kQuad12Name);
  const ElementType* const type = find(code);
  return type != nullptr ? std::string(type->name) : std::to_string(code);
}

u64 elementTypeFromWord(std::string_view word) {
  if (word == kQuad12Name) return kQuad12;
  for (const ElementType& type : kElementTypes)
    if (word == type.name) return type.code;

  // Digits are accepted only in the form in which the code is printed: no sign, no leading zero.
  u64 code = 0;
  std::from_chars(word.data(), word.data() + word.size(), code);
  if ((code == kQuad12 || find(code) != nullptr) && word == std::to_string(code)) return code;
  throw utility::RuntimeError("Failed to identify the ET: " + std::string(word));
}

u64 ElementInfo::order() const {
  if (elementTypes_.empty()) return 0;
  u64 smallest = kNone;
  u64 largest = 0;
  u64 known = kNone;
  for (const u64 code : elementTypes_) {
    if (code == known) continue;
    const u64 order = orderOf(code);
    smallest = std::min(smallest, order);
    largest = std::max(largest, order);
    known = code;
  }
  if (smallest != largest)
    throw std::runtime_error(
        io::format("ElementInfo: A list of mixed order elements has been provided (min={}, max={})",
                   smallest, largest));
  return smallest;
}

}  // namespace velmo::grid
