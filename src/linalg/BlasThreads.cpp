#include "linalg/BlasThreads.hpp"

extern "C" void openblas_set_num_threads(int numThreads);

namespace velmo::linalg {

void setBlasThreads(int numThreads) { openblas_set_num_threads(numThreads); }

}  // namespace velmo::linalg
