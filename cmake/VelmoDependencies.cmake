# Every outside library with the oldest version that the project is built and tested with.

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)
find_package(HDF5 1.10 REQUIRED COMPONENTS C)
find_package(yaml-cpp 0.7 REQUIRED)
find_package(fmt 9 REQUIRED)

# Debian's sequential OpenBLAS returns wrong products when two threads call it at once. Ask for the
# threaded build by its own folder and let main() set its thread count to 1.
find_package(OpenBLAS 0.3 REQUIRED
             PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/openblas-pthread/cmake/openblas)
find_library(VELMO_OPENBLAS_LIBRARY openblas REQUIRED
             PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/openblas-pthread
             NO_DEFAULT_PATH)
add_library(velmo_blas INTERFACE)
target_link_libraries(velmo_blas INTERFACE "${VELMO_OPENBLAS_LIBRARY}")
add_library(velmo::blas ALIAS velmo_blas)

if(VELMO_TESTS)
  find_package(GTest 1.12 REQUIRED)
endif()
if(VELMO_BENCHMARKS)
  find_package(benchmark 1.7 REQUIRED)
endif()
