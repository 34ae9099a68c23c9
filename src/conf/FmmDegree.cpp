#include "conf/FmmDegree.hpp"

#include "io/Exception.hpp"

namespace velmo::conf {

void checkFmmDegree(u64 degree) {
  if (degree < 3) throw utility::RuntimeError("The FMM expansion degree must be >= 3");
}

}  // namespace velmo::conf
