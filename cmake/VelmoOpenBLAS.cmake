# Finds an OpenBLAS that several threads may call at once, into VELMO_OPENBLAS_LIBRARY.
#
# There are three builds of OpenBLAS: for one thread, for POSIX threads and for OpenMP. Two threads
# that call the first one at the same time get wrong products (measured), and the last one is safe
# only for OpenMP's own threads. We need the second one; main() sets its number of threads to 1.
# Which build a name refers to depends on the system, so the library itself is asked.

set(VELMO_OPENBLAS_LIBRARY "" CACHE FILEPATH
    "libopenblas built for POSIX threads; looked for where this is empty")

# velmo_ask_openblas(<library> <result>): "" if the library is suitable, otherwise the reason.
function(velmo_ask_openblas library result)
  set(source "${CMAKE_BINARY_DIR}/CMakeFiles/velmo_openblas.c")
  file(WRITE "${source}"
       "int openblas_get_parallel(void);\nint main(void) { return openblas_get_parallel(); }\n")
  try_run(answer linked SOURCES "${source}" LINK_LIBRARIES "${library}" NO_CACHE)
  if(NOT linked)
    set(${result} "can't be linked, or isn't OpenBLAS" PARENT_SCOPE)
  elseif(answer EQUAL 0)
    set(${result} "is built for one thread" PARENT_SCOPE)
  elseif(answer EQUAL 2)
    set(${result} "is built for OpenMP" PARENT_SCOPE)
  elseif(NOT answer EQUAL 1)
    set(${result} "can't be run" PARENT_SCOPE)
  else()
    set(${result} "" PARENT_SCOPE)
  endif()
endfunction()

# The libraries that pkg-config and CMake's own finder name, and Debian's folder, which has this
# build even if the system prefers another one.
function(velmo_openblas_candidates result)
  find_package(PkgConfig QUIET)
  if(PkgConfig_FOUND)
    pkg_check_modules(openblas QUIET openblas)
  endif()
  set(BLA_VENDOR OpenBLAS)
  find_package(BLAS QUIET)
  set(debian "/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/openblas-pthread/libopenblas.so")
  set(candidates ${openblas_LINK_LIBRARIES} ${BLAS_LIBRARIES})
  list(FILTER candidates INCLUDE REGEX "openblas")
  if(EXISTS "${debian}")
    list(APPEND candidates "${debian}")
  endif()
  list(REMOVE_DUPLICATES candidates)
  set(${result} "${candidates}" PARENT_SCOPE)
endfunction()

function(velmo_find_openblas)
  if(VELMO_OPENBLAS_LIBRARY)
    set(candidates "${VELMO_OPENBLAS_LIBRARY}")
  else()
    velmo_openblas_candidates(candidates)
  endif()
  foreach(candidate IN LISTS candidates)
    velmo_ask_openblas("${candidate}" objection)
    if(objection STREQUAL "")
      set(VELMO_OPENBLAS_LIBRARY "${candidate}" CACHE FILEPATH "" FORCE)
      return()
    endif()
    string(APPEND tried "\n  ${candidate} ${objection}")
  endforeach()
  message(FATAL_ERROR "No OpenBLAS built for POSIX threads.${tried}\n"
          "Install one (Debian: libopenblas-pthread-dev), or name it with "
          "-DVELMO_OPENBLAS_LIBRARY=/path/to/libopenblas.so")
endfunction()
