#pragma once

#include "comm/Comm.hpp"
#include "tree/FmmTree.hpp"

namespace velmo::fmm {

/// Exchange of the multipoles of boxes that several processes hold. With one process no box is a
/// halo box and nothing leaves the process.
class CommunicateMoments {
 public:
  /// @throws utility::RuntimeError "Expected only non-local IDs here" for a halo box, which one
  ///         process cannot have
  static void initialize(const FmmTree& tree, comm::Comm comm);
};

}  // namespace velmo::fmm
