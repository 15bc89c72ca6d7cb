# Install rules: the three libraries, their public headers, the CMake package and the pkg-config
# file; programs have theirs beside their sources. An installed tree may be moved as a whole.
include(CMakePackageConfigHelpers)

set(headerDir ${CMAKE_INSTALL_INCLUDEDIR}/survmeth)
set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/survmeth)

install(TARGETS Klikro Dist survival EXPORT survmeth
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# The public headers; what only the libraries' own sources include stays behind.
install(FILES Klikro/Klikro Klikro/matrix Klikro/matrixInt Klikro/Smatrix Klikro/utilities.h
              Klikro/export.h
        DESTINATION ${headerDir}/Klikro)
install(FILES Dist/Dist Dist/export.h DESTINATION ${headerDir}/Dist)
install(FILES solver/solver.h DESTINATION ${headerDir}/solver)
install(FILES survival/survival.h survival/export.h survival/SortApply.h
        DESTINATION ${headerDir}/survival)
install(DIRECTORY survival/calls DESTINATION ${headerDir}/survival FILES_MATCHING PATTERN *.h)
# A family folder's header of its own name declares the family's matrix-level routines.
file(GLOB families RELATIVE ${PROJECT_SOURCE_DIR}/survival CONFIGURE_DEPENDS survival/*/*.h)
foreach(header ${families})
  get_filename_component(family ${header} DIRECTORY)
  if(header STREQUAL "${family}/${family}.h")
    install(FILES survival/${header} DESTINATION ${headerDir}/survival/${family})
  endif()
endforeach()

# find_package(survmeth) gives survmeth::Klikro, survmeth::Dist and survmeth::survival.
install(EXPORT survmeth NAMESPACE survmeth:: FILE survmeth-targets.cmake DESTINATION ${packageDir})
configure_package_config_file(cmake/survmeth-config.cmake.in
                              ${CMAKE_BINARY_DIR}/survmeth-config.cmake
                              INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/survmeth-config-version.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/survmeth-config.cmake
              ${CMAKE_BINARY_DIR}/survmeth-config-version.cmake
        DESTINATION ${packageDir})

# pkg-config finds everything relative to the file itself, so that a moved tree keeps working.
file(RELATIVE_PATH pcToPrefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pcToPrefix "${pcToPrefix}")
file(RELATIVE_PATH prefixToLib ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH prefixToInclude ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(cmake/survmeth.pc.in ${CMAKE_BINARY_DIR}/survmeth.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/survmeth.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
