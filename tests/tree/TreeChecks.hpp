#pragma once

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

#include "conf/MethodSettings.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::tree::test {

/// The options that every cloud is tried with.
inline std::vector<Options> allOptions() {
  std::vector<Options> all;
  for (const u64 leafSize : {1, 3, 20, 100, 500}) all.push_back({leafSize, 0, true});
  for (u64 level = 0; level <= 6; ++level) all.push_back({1, level, false});
  return all;
}

inline std::string describe(const Options& opts) {
  return opts.adaptive ? "leaf size " + std::to_string(opts.leafSize)
                       : "level " + std::to_string(opts.maxLevel);
}

/// Number of objects inside a cell, by looking at each of them.
inline u64 countInside(bits::Morton cell, std::span<const bits::Morton> ids) {
  u64 count = 0;
  for (const bits::Morton id : ids) count += cell.holds(id) ? 1 : 0;
  return count;
}

/// Everything that a tree tells of itself, in one list of words.
inline std::vector<u64> fingerprint(const tree::FmmTree& tree) {
  std::vector<u64> words;
  for (const fmm::Box<3>& box : tree.tree().boxes) {
    words.insert(words.end(), {box.id.value(), box.firstObject.value(), box.numObjects,
                               box.flags.bits(), box.children.bits()});
    for (const ListKind kind : {ListKind::U, ListKind::V, ListKind::W, ListKind::X}) {
      const auto positions = box.positions(kind);
      words.push_back(positions.size());
      words.insert(words.end(), positions.begin(), positions.end());
    }
  }
  words.insert(words.end(), tree.sourceOrder().begin(), tree.sourceOrder().end());
  words.insert(words.end(), tree.targetOrder().begin(), tree.targetOrder().end());
  return words;
}

}  // namespace velmo::tree::test
