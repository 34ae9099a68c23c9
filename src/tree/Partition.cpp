#include "tree/Partition.hpp"

#include <cassert>

#include "io/Exception.hpp"

namespace velmo::tree {

Partition Partition::ofOneProcess(bits::Morton first, bits::Morton last) {
  return {{first}, {last}, {true}, true};
}

std::vector<int> Partition::check(bits::Morton /*id*/) const {
  if (!finalized) throw utility::RuntimeError("velmo::tree::Partition::check not finalized");
  assert(last.size() == 1);
  return {0};
}

}  // namespace velmo::tree
