# What `cmake --install` puts where beside the program, which its own folder installs, and the
# Debian package that CPack makes of it.

include(GNUInstallDirs)

# An installed program must find the threaded OpenBLAS too, whichever build the system prefers: the
# sequential one returns wrong products when two threads call it at once.
get_filename_component(velmo_openblas_folder "${VELMO_OPENBLAS_LIBRARY}" DIRECTORY)
set_target_properties(orvanta.post PROPERTIES INSTALL_RPATH "${velmo_openblas_folder}")

set(velmo_man_page "${PROJECT_BINARY_DIR}/docs/orvanta.post.1")
configure_file(docs/orvanta.post.1.in "${velmo_man_page}" @ONLY)
find_program(VELMO_GZIP gzip REQUIRED)
execute_process(COMMAND "${VELMO_GZIP}" -9nc "${velmo_man_page}" OUTPUT_FILE "${velmo_man_page}.gz"
                COMMAND_ERROR_IS_FATAL ANY)
install(FILES "${velmo_man_page}.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")

install(FILES share/completions/orvanta.post
        DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
install(FILES README.md CHANGELOG.md CONTRIBUTING.md LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}")
# The README's links lead here.
install(DIRECTORY docs DESTINATION "${CMAKE_INSTALL_DOCDIR}"
        FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.png" PATTERN "*.csv")

set(VELMO_MAINTAINER "orvanta.post maintainers <maintainers@orvanta.example>" CACHE STRING
    "Who stands behind a package built here: name <address>")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME "${PROJECT_NAME}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "${VELMO_MAINTAINER}")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The libraries' own record would accept any build of OpenBLAS.
set(CPACK_DEBIAN_PACKAGE_DEPENDS libopenblas0-pthread)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"potential and field of a surface charge density at given points
Post solver of a boundary-element solver for electrostatics: reads the charge
density on triangles and quadrilaterals from a .vtkhdf file and evaluates
potential and field at a list of points by a fast multipole method.")
include(CPack)
