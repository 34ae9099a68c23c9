#include "conf/GridTransform.hpp"

namespace velmo::conf {

std::unique_ptr<GridTransformBase> GridScaling::clone() const {
  return std::make_unique<GridScaling>(*this);
}

std::unique_ptr<GridTransformBase> GridTranslation::clone() const {
  return std::make_unique<GridTranslation>(*this);
}

std::unique_ptr<GridTransformBase> GridRotation::clone() const {
  return std::make_unique<GridRotation>(*this);
}

std::unique_ptr<GridTransformBase> GridAffine::clone() const {
  return std::make_unique<GridAffine>(*this);
}

}  // namespace velmo::conf
