# Compiler settings every target shares: the same input must give the same bits on every
# machine, so contraction stays off and nothing may reorder floating-point sums.
add_library(survmeth_options INTERFACE)
target_compile_options(survmeth_options INTERFACE -ffp-contract=off -Wall -Wextra -Wpedantic
                                                  -Wshadow)
# GCC 12 sees overlapping copies in every "literal" + std::string.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  target_compile_options(survmeth_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
# Under its sanitizers GCC sees uninitialised members in every moved std::variant; its manual says
# that they bring such false alarms. The plain builds keep the warning.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_FLAGS MATCHES "-fsanitize=")
  target_compile_options(survmeth_options INTERFACE -Wno-maybe-uninitialized)
endif()
if(SURVMETH_WERROR)
  target_compile_options(survmeth_options INTERFACE -Werror)
endif()
target_include_directories(survmeth_options INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
if(SURVMETH_MULTIVERSION)
  target_compile_definitions(survmeth_options INTERFACE SURVMETH_MULTIVERSION=1)
endif()

# Where an installed library looks for its siblings. On macOS: the host application's folder, the
# folder of the Office applications, the root folder, the user's own library folder, in that
# order. The loader leaves a tilde as it is; the last entry is there for tools that expand it, and
# the loader's own last resort is the same folder. Elsewhere a library finds its siblings beside
# itself and a program finds them in the library folder next to its own, wherever both are moved.
set(SURVMETH_OFFICE_FOLDER "/Applications/Microsoft Office 2011" CACHE PATH
    "Folder of the Office applications (macOS)")
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
if(APPLE)
  set(CMAKE_INSTALL_RPATH "@executable_path" "${SURVMETH_OFFICE_FOLDER}" "/" "~/lib")
else()
  file(RELATIVE_PATH binToLib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/${binToLib}")
endif()

# Linkers that read version scripts keep standard templates out of the libraries' exports.
include(CheckLinkerFlag)
set(exportsMap ${CMAKE_CURRENT_LIST_DIR}/exports.map)
check_linker_flag(CXX "-Wl,--version-script=${exportsMap}" SURVMETH_HAS_VERSION_SCRIPT)

# A shared library of the product: sources, versioned name, hidden symbols.
function(survmeth_library name)
  add_library(${name} SHARED ${ARGN})
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:survmeth_options>)
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION}
                                           SOVERSION ${PROJECT_VERSION_MAJOR})
  if(SURVMETH_HAS_VERSION_SCRIPT)
    target_link_options(${name} PRIVATE -Wl,--version-script=${exportsMap})
    set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS ${exportsMap})
  endif()
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                            $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/survmeth>)
endfunction()
