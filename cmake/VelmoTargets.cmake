# Common parts of all targets: language, warnings, sanitizers, and the functions that make libraries
# and tests.

include(GoogleTest OPTIONAL)

add_library(velmo_options INTERFACE)
target_compile_features(velmo_options INTERFACE cxx_std_20)
target_include_directories(velmo_options INTERFACE "${CMAKE_SOURCE_DIR}/src")
target_compile_options(velmo_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  # Square roots vectorise only if they don't have to set errno; no value changes.
  -fno-math-errno)
if(VELMO_WARNINGS_AS_ERRORS)
  target_compile_options(velmo_options INTERFACE -Werror)
endif()
if(VELMO_NATIVE)
  target_compile_options(velmo_options INTERFACE -march=native)
endif()
if(VELMO_SANITIZE)
  target_compile_options(velmo_options INTERFACE
    -fsanitize=${VELMO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(velmo_options INTERFACE -fsanitize=${VELMO_SANITIZE})
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")
endif()

find_program(VELMO_CCACHE ccache)
if(VELMO_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${VELMO_CCACHE}")
endif()

# velmo_add_library(<name> SOURCES ... [PUBLIC ...] [PRIVATE ...])
# A static library velmo_<name> with the alias velmo::<name>. PUBLIC lists what its headers include,
# PRIVATE what only its sources need.
function(velmo_add_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;PUBLIC;PRIVATE")
  if(arg_SOURCES)
    add_library(velmo_${name} STATIC ${arg_SOURCES})
    target_link_libraries(velmo_${name} PUBLIC velmo_options ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
  else()
    add_library(velmo_${name} INTERFACE)
    target_link_libraries(velmo_${name} INTERFACE velmo_options ${arg_PUBLIC})
  endif()
  add_library(velmo::${name} ALIAS velmo_${name})
endfunction()

# velmo_add_tests(<name> SOURCES ... LINK ...)
# One executable <name>_tests whose cases ctest runs one by one.
function(velmo_add_tests name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
  add_executable(${name}_tests ${arg_SOURCES})
  target_link_libraries(${name}_tests PRIVATE velmo_options ${arg_LINK} GTest::gtest_main)
  target_include_directories(${name}_tests PRIVATE "${CMAKE_SOURCE_DIR}/tests")
  gtest_discover_tests(${name}_tests TEST_PREFIX "${name}." DISCOVERY_MODE PRE_TEST)
endfunction()

# velmo_multiversion(<name> <stem>)
# Adds the sources <stem>Baseline.cpp, <stem>Avx2.cpp and <stem>Avx512.cpp to library <name>, each
# compiled for its instruction set. The choice is made at run time.
function(velmo_multiversion name stem)
  target_sources(velmo_${name} PRIVATE ${stem}Baseline.cpp ${stem}Avx2.cpp ${stem}Avx512.cpp)
  # Vectors wider than the set's registers are never passed to a call, so their ABI doesn't matter.
  set_source_files_properties(${stem}Baseline.cpp PROPERTIES COMPILE_OPTIONS "-Wno-psabi")
  set_source_files_properties(${stem}Avx2.cpp PROPERTIES
    COMPILE_OPTIONS "-Wno-psabi;-march=x86-64-v3")
  set_source_files_properties(${stem}Avx512.cpp PROPERTIES
    COMPILE_OPTIONS "-Wno-psabi;-march=x86-64-v4;-mprefer-vector-width=512")
endfunction()
