#include "fmm/CommunicateMoments.hpp"

#include "io/Exception.hpp"

namespace velmo::fmm {

void CommunicateMoments::initialize(const FmmTree& tree, comm::Comm comm) {
  if (comm::size(comm) > 1) return;
  for (const Box<3>& box : tree.tree().boxes)
    if (box.isHalo()) throw utility::RuntimeError("Expected only non-local IDs here");
}

}  // namespace velmo::fmm
