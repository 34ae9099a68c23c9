#pragma once

namespace velmo::linalg {

/// Number of threads that the linear algebra library uses inside one call. The program sets 1 at
/// its start: it runs its own threads above the library. Not to be called beside running library
/// calls.
void setBlasThreads(int numThreads);

}  // namespace velmo::linalg
