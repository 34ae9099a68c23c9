# All external libraries, with the oldest versions that the project is built and tested with.

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)
find_package(HDF5 1.10 REQUIRED COMPONENTS C)
find_package(yaml-cpp 0.7 REQUIRED)
find_package(fmt 9 REQUIRED)

include(VelmoOpenBLAS)
velmo_find_openblas()
add_library(velmo_blas INTERFACE)
target_link_libraries(velmo_blas INTERFACE "${VELMO_OPENBLAS_LIBRARY}")
add_library(velmo::blas ALIAS velmo_blas)

if(VELMO_TESTS)
  find_package(GTest 1.12 REQUIRED)
endif()
if(VELMO_BENCHMARKS)
  find_package(benchmark 1.7 REQUIRED)
endif()
