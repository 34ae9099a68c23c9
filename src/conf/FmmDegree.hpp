#pragma once

#include "io/Types.hpp"

namespace velmo::conf {

/// Refuses expansion degrees that the far field cannot work with.
/// @throws velmo::utility::RuntimeError "The FMM expansion degree must be >= 3"
void checkFmmDegree(u64 degree);

}  // namespace velmo::conf
