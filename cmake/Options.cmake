# Settings that every target shares. The same input must give the same bits on every machine:
# contraction stays off, nothing may reorder floating-point sums, 32-bit x86 computes with SSE2.
include(CheckCXXSourceCompiles)

# Whether 32-bit x86 would compute with the 80-bit registers: only there the two flags are needed.
check_cxx_source_compiles("#if !defined(__i386__) || defined(__SSE2_MATH__)\n#error\n#endif\n
                           int main() {}" SURVMETH_X87)
set(SURVMETH_ARITHMETIC)
if(SURVMETH_X87)
  set(SURVMETH_ARITHMETIC -msse2 -mfpmath=sse)
endif()

add_library(survmeth_options INTERFACE)
add_library(survmeth::options ALIAS survmeth_options)
target_compile_features(survmeth_options INTERFACE cxx_std_20 c_std_11)
target_compile_options(survmeth_options INTERFACE ${SURVMETH_ARITHMETIC} -ffp-contract=off -Wall
                                                  -Wextra -Wpedantic -Wshadow)
# GCC 12 sees overlapping copies in every "literal" + std::string.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  target_compile_options(survmeth_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
# Under its sanitizers GCC sees uninitialised members in every moved std::variant; its manual says
# that they bring such false alarms. The plain builds keep the warning.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_FLAGS MATCHES "-fsanitize=")
  target_compile_options(survmeth_options INTERFACE -Wno-maybe-uninitialized)
endif()
# What is precompiled counts no longer as the system's, and GCC 12 sees strings overrun within it.
if(SURVMETH_PRECOMPILE AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  target_compile_options(survmeth_options INTERFACE -Wno-array-bounds -Wno-stringop-overflow)
endif()
if(SURVMETH_WERROR)
  target_compile_options(survmeth_options INTERFACE -Werror)
endif()
target_include_directories(survmeth_options INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
if(SURVMETH_MULTIVERSION)
  include(${CMAKE_CURRENT_LIST_DIR}/Multiversion.cmake)
  if(SURVMETH_CLONES_WORK)
    target_compile_definitions(survmeth_options INTERFACE SURVMETH_MULTIVERSION=1)
  endif()
endif()

# Linkers that read version scripts keep standard templates out of the libraries' exports.
include(CheckLinkerFlag)
set(exportsMap ${CMAKE_CURRENT_LIST_DIR}/exports.map)
check_linker_flag(CXX "-Wl,--version-script=${exportsMap}" SURVMETH_HAS_VERSION_SCRIPT)

# What a shared library of the product has: a versioned name and a run path.
function(survmeth_shared target)
  set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION}
                                             SOVERSION ${PROJECT_VERSION_MAJOR})
  survmeth_find_siblings(${target} library)
  if(SURVMETH_HAS_VERSION_SCRIPT)
    target_link_options(${target} PRIVATE -Wl,--version-script=${exportsMap})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${exportsMap})
  endif()
endfunction()

# One of the add-in's libraries: always shared, hidden symbols.
function(survmeth_addin name)
  set(target survmeth_${name})
  add_library(${target} SHARED ${ARGN})
  add_library(survmeth::${name} ALIAS ${target})
  string(TOUPPER ${name} upper)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:survmeth_options>)
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${name} EXPORT_NAME ${name}
                        DEFINE_SYMBOL ${upper}_BUILDING
                        CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  survmeth_shared(${target})
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/survmeth>)
endfunction()

# The parts share the headers of the first one, compiled once.
function(survmeth_precompile target)
  get_property(owner GLOBAL PROPERTY SURVMETH_PRECOMPILED)
  if(owner)
    target_precompile_headers(${target} REUSE_FROM ${owner})
  else()
    set_property(GLOBAL PROPERTY SURVMETH_PRECOMPILED ${target})
    target_precompile_headers(${target} PRIVATE
      <algorithm> <cmath> <cstdint> <functional> <limits> <memory> <optional> <span> <stdexcept>
      <string> <string_view> <utility> <variant> <vector>)
  endif()
endfunction()

# A folder of libsurvmeth, as a static library by itself: survmeth_<name>. Tests take the folders,
# so that one which reaches for another above it does not link; callers take libsurvmeth, which is
# made of their objects.
function(survmeth_part name)
  set(target survmeth_${name})
  add_library(${target} STATIC ${ARGN})
  add_library(survmeth::${name} ALIAS ${target})
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:survmeth_options>)
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_compile_options(${target} INTERFACE ${SURVMETH_ARITHMETIC})
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  if(BUILD_SHARED_LIBS)
    set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET default
                                               VISIBILITY_INLINES_HIDDEN OFF)
  else()
    set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden
                                               VISIBILITY_INLINES_HIDDEN ON)
  endif()
  if(SURVMETH_PRECOMPILE)
    survmeth_precompile(${target})
  endif()
  set_property(GLOBAL APPEND PROPERTY SURVMETH_PARTS ${name})
endfunction()
