#pragma once

#include <memory>
#include <span>
#include <vector>

#include "comm/Comm.hpp"
#include "io/Types.hpp"

namespace velmo::topo {

/// Which rank owns the entities of one codimension: the smallest rank among those that hold them.
class Ownership {
 public:
  Ownership(comm::Comm comm, u64 numEntities)
      : comm_(comm), numEntities_(numEntities), sendLists_(static_cast<u64>(comm::size(comm))) {}

  [[nodiscard]] comm::Comm communicator() const noexcept { return comm_; }
  [[nodiscard]] u64 numEntities() const noexcept { return numEntities_; }

  /// With one rank, the only holder of every entity owns it.
  [[nodiscard]] int owner(u64 /*entity*/) const noexcept { return comm::rank(comm_); }
  [[nodiscard]] bool isOwned(u64 entity) const noexcept {
    return owner(entity) == comm::rank(comm_);
  }

  /// Per rank, the owned entities that it holds too; empty with one rank.
  [[nodiscard]] const std::vector<std::vector<u64>>& sendLists() const noexcept {
    return sendLists_;
  }

 private:
  comm::Comm comm_;
  u64 numEntities_;
  std::vector<std::vector<u64>> sendLists_;
};

/// One record per codimension.
using Ownerships = std::vector<Ownership>;

/// @throws utility::RuntimeError "Ownerships has not been created yet" for a null pointer
[[nodiscard]] const Ownerships& requireOwnerships(const std::unique_ptr<Ownerships>& ownerships);

/// The tags of all ranks, sorted and unique.
[[nodiscard]] std::vector<u64> gatherTags(comm::Comm comm, std::span<const u64> tags);

}  // namespace velmo::topo
