# What `cmake --install` installs besides the program, which its own folder installs, and the Debian
# package that CPack makes from it.

set(VELMO_MAINTAINER "orvanta.post maintainers <maintainers@orvanta.example>" CACHE STRING
    "Who maintains a package built here: name <address>")
set(VELMO_HOMEPAGE "https://orvanta.example/post" CACHE STRING
    "Home page of the project, as a package built here states it")

# An installed program must find the OpenBLAS that it was built with, whichever build the system
# prefers: the single-threaded one returns wrong products when two threads call it at the same time.
get_filename_component(velmo_openblas_folder "${VELMO_OPENBLAS_LIBRARY}" DIRECTORY)
if(NOT velmo_openblas_folder IN_LIST CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES)
  set_target_properties(orvanta.post make_sample PROPERTIES
                        INSTALL_RPATH "${velmo_openblas_folder}")
endif()
# Only the scripts of the gallery need it, since users have solutions of their own.
install(TARGETS make_sample DESTINATION "${CMAKE_INSTALL_LIBEXECDIR}/orvanta.post")

set(velmo_tools points view plot check)
foreach(tool IN LISTS velmo_tools)
  install(PROGRAMS tools/launch DESTINATION "${CMAKE_INSTALL_BINDIR}" RENAME orvanta-${tool})
  install(FILES share/completions/orvanta-tools RENAME orvanta-${tool}
          DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
endforeach()
install(DIRECTORY tools/orvanta_tools DESTINATION "${CMAKE_INSTALL_DATADIR}/orvanta.post"
        FILES_MATCHING PATTERN "*.py")
install(FILES "${PROJECT_BINARY_DIR}/share/settings.schema.json"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/orvanta.post")
install(FILES share/completions/orvanta.post
        DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")

find_program(VELMO_GZIP gzip REQUIRED)
# velmo_install_gzipped(<file> <folder> <name>): without time stamps, so that equal input gives
# equal packages.
function(velmo_install_gzipped file folder name)
  set(zipped "${PROJECT_BINARY_DIR}/gzipped/${name}.gz")
  file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/gzipped")
  execute_process(COMMAND "${VELMO_GZIP}" -9nc "${file}" OUTPUT_FILE "${zipped}"
                  COMMAND_ERROR_IS_FATAL ANY)
  install(FILES "${zipped}" DESTINATION "${folder}")
endfunction()

foreach(page orvanta.post orvanta-points orvanta-view orvanta-plot orvanta-check)
  configure_file(docs/${page}.1.in "${PROJECT_BINARY_DIR}/docs/${page}.1" @ONLY)
  velmo_install_gzipped("${PROJECT_BINARY_DIR}/docs/${page}.1" "${CMAKE_INSTALL_MANDIR}/man1"
                        ${page}.1)
endforeach()
set(velmo_man_page "${PROJECT_BINARY_DIR}/docs/orvanta.post.1")

# Inputs for a first run: a solution, points on a plane, and settings with comments.
set(velmo_sample "${PROJECT_BINARY_DIR}/sample/sample")
add_custom_command(
  OUTPUT "${velmo_sample}.vtkhdf" "${velmo_sample}.xyz" "${velmo_sample}.yaml"
  COMMAND "${CMAKE_COMMAND}" -E make_directory "${PROJECT_BINARY_DIR}/sample"
  COMMAND make_sample --body=sphere-pair --density=exact --density-order=2 --geometry-order=2
          --refine=8 --gzip --points=plane --count=10000 --from=-3,0,-3 --to=3,0,3 --degree=8
          --near-order=8 --min-rel-dist=2 --leaf-size=200 "--out=${velmo_sample}"
  DEPENDS make_sample
  COMMENT "Writing the sample" VERBATIM)
add_custom_target(sample ALL
                  DEPENDS "${velmo_sample}.vtkhdf" "${velmo_sample}.xyz" "${velmo_sample}.yaml")
set(velmo_examples "${CMAKE_INSTALL_DOCDIR}/examples")
install(FILES "${velmo_sample}.vtkhdf" "${velmo_sample}.xyz" "${velmo_sample}.yaml"
        DESTINATION "${velmo_examples}")
install(DIRECTORY examples/cluster examples/gallery DESTINATION "${velmo_examples}"
        USE_SOURCE_PERMISSIONS)

install(FILES README.md CHANGELOG.md CONTRIBUTING.md CITATION.cff
        DESTINATION "${CMAKE_INSTALL_DOCDIR}")
# The README has links to these.
install(DIRECTORY docs DESTINATION "${CMAKE_INSTALL_DOCDIR}"
        FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.png" PATTERN "*.csv")

# Debian requires these names and formats.
foreach(file copyright changelog)
  configure_file(share/debian/${file}.in "${PROJECT_BINARY_DIR}/debian/${file}" @ONLY)
endforeach()
install(FILES "${PROJECT_BINARY_DIR}/debian/copyright" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
velmo_install_gzipped("${PROJECT_BINARY_DIR}/debian/changelog" "${CMAKE_INSTALL_DOCDIR}" changelog)
install(FILES share/debian/lintian-overrides RENAME orvanta.post
        DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME "${PROJECT_NAME}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "${VELMO_MAINTAINER}")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${VELMO_HOMEPAGE}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The dependency that dpkg derives from the library would accept any build of OpenBLAS.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libopenblas0-pthread, python3 (>= 3.11)")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "python3-numpy, python3-h5py, python3-matplotlib, python3-yaml")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "python3-meshio, parallel, paraview")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"potential and field of a surface charge density at given points
Post solver of a boundary-element solver for electrostatics: reads the charge
density on triangles and quadrilaterals from a .vtkhdf file and evaluates
potential and field at a list of points by a fast multipole method. With tools
that make points and draw results.")
include(CPack)
