# Install rules: libsurvmeth, the add-in's three libraries, their public headers, the CMake package
# and the pkg-config file; programs have theirs beside their sources. An installed tree may be moved
# as a whole. Components: survmeth_runtime (shared libraries, programs), survmeth_development.
include(CMakePackageConfigHelpers)

set(headerDir ${CMAKE_INSTALL_INCLUDEDIR}/survmeth)
set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/survmeth)
set(development COMPONENT survmeth_development)

install(TARGETS survmeth_Klikro survmeth_Dist survmeth_survival libsurvmeth EXPORT survmeth
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
                COMPONENT survmeth_runtime NAMELINK_COMPONENT survmeth_development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} ${development}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT survmeth_runtime)

# The add-in's public headers; what only the libraries' own sources include stays behind.
install(FILES Klikro/Klikro Klikro/matrix Klikro/matrixInt Klikro/Smatrix Klikro/utilities.h
              Klikro/export.h
        DESTINATION ${headerDir}/Klikro ${development})
install(FILES Dist/Dist Dist/export.h DESTINATION ${headerDir}/Dist ${development})
install(FILES solver/solver.h DESTINATION ${headerDir}/solver ${development})
install(FILES survival/survival.h survival/export.h survival/SortApply.h
        DESTINATION ${headerDir}/survival ${development})
install(DIRECTORY survival/calls DESTINATION ${headerDir}/survival ${development}
        FILES_MATCHING PATTERN *.h)
# A family folder's header of its own name declares the family's matrix-level routines.
file(GLOB families RELATIVE ${PROJECT_SOURCE_DIR}/survival CONFIGURE_DEPENDS survival/*/*.h)
foreach(header ${families})
  get_filename_component(family ${header} DIRECTORY)
  if(header STREQUAL "${family}/${family}.h")
    install(FILES survival/${header} DESTINATION ${headerDir}/survival/${family} ${development})
  endif()
endforeach()

# libsurvmeth's: those that docs/cpp.md names, and what they include.
set(engineHeaders
    numerics/elementary.h numerics/progress.h numerics/threads.h engine/input.h engine/cox/fit.h
    engine/cox/baseline.h
    engine/cox/concordance.h engine/cox/profile.h engine/cox/proportionality.h procedures/profile.h
    engine/cox/residuals.h engine/curves/bands.h engine/curves/comparison.h engine/curves/curve.h
    engine/curves/hazardRate.h engine/curves/means.h engine/curves/quantiles.h engine/curves/rates.h
    engine/incidence/gray.h engine/incidence/lost.h engine/roc/curves.h report/report.h report/build.h report/keys.h report/text.h report/json.h
    report/csv.h report/html.h)
set(facadeHeaders
    frame/frame.h frame/reader.h frame/select.h frame/evaluate.h model/formula.h model/design.h
    model/response.h model/coding.h analysis/declaration.h analysis/declare.h analysis/life/run.h
    analysis/agreement.h analysis/demingFit.h pictures/pictures.h)
set(publicHeaders ${engineHeaders})
if(SURVMETH_PROGRAMS)
  list(APPEND publicHeaders ${facadeHeaders})
endif()
install(CODE "set(headers ${publicHeaders})
              set(source [[${PROJECT_SOURCE_DIR}]])
              set(destination [[${headerDir}]])"
        ${development})
install(SCRIPT cmake/install_headers.cmake ${development})

# find_package(survmeth) gives survmeth::survmeth, survmeth::Klikro, survmeth::Dist and
# survmeth::survival.
install(EXPORT survmeth NAMESPACE survmeth:: FILE survmeth-targets.cmake DESTINATION ${packageDir}
        ${development})
configure_package_config_file(cmake/survmeth-config.cmake.in
                              ${PROJECT_BINARY_DIR}/survmeth-config.cmake
                              INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/survmeth-config-version.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/survmeth-config.cmake
              ${PROJECT_BINARY_DIR}/survmeth-config-version.cmake
        DESTINATION ${packageDir} ${development})

# pkg-config finds everything relative to the file itself, so that a moved tree keeps working.
file(RELATIVE_PATH pcToPrefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pcToPrefix "${pcToPrefix}")
file(RELATIVE_PATH prefixToLib ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH prefixToInclude ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
list(JOIN SURVMETH_ARITHMETIC " " pcArithmetic)
set(pcPrivate ${CMAKE_THREAD_LIBS_INIT})
if(zlib)
  string(APPEND pcPrivate " -lz")
endif()
configure_file(cmake/survmeth.pc.in ${PROJECT_BINARY_DIR}/survmeth.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/survmeth.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        ${development})

install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} ${development})
