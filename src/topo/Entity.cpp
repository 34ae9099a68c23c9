#include "topo/Entity.hpp"

#include <stdexcept>

namespace velmo::topo {

ReferenceType referenceType(u64 dim, u64 numNodes) {
  switch (dim) {
    case 0:
      if (numNodes != 1) throw std::runtime_error("0-dim can only have 1 node");
      return ReferenceType::Point;
    case 1:
      if (numNodes != 2) throw std::runtime_error("1-dim can only have 2 nodes");
      return ReferenceType::Line;
    default:
      if (numNodes != 3 && numNodes != 4)
        throw std::runtime_error("2-dim can only have 3 or 4 nodes");
      return numNodes == 3 ? ReferenceType::Triangle : ReferenceType::Quadrilateral;
  }
}

u64 Entity::index() const {
  if (isTemporary())
    throw std::runtime_error(
        "This entity is only temporary, to get the index of its original use "
        "velmo::topo::Grid::index( entity ) instead");
  return index_;
}

u64 Entity::dimension() const {
  if (nodes_.size() == 1) return 0;
  if (nodes_.size() == 2) return 1;
  return topo::dimension(referenceType(2, nodes_.size()));
}

ReferenceType referenceType(const Entity& entity) {
  return referenceType(entity.dimension(), entity.nodes().size());
}

}  // namespace velmo::topo
