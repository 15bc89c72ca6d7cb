# Where libraries and programs look for the product's libraries, on macOS and elsewhere:
#   cmake -P run_path.cmake
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/../../cmake/RunPath.cmake)

function(expect kind apple wanted)
  survmeth_run_path(found ${kind} "${apple}" ../lib)
  if(NOT "${found}" STREQUAL "${wanted}")
    message(FATAL_ERROR "${kind}, apple ${apple}: ${found} instead of ${wanted}")
  endif()
endfunction()

set(host "@executable_path;/Applications/Microsoft Office 2011;/;~/lib")
expect(library 1 "${host}")
expect(program 1 "@executable_path/../lib;${host}")
expect(library "" "$ORIGIN")
expect(program "" "$ORIGIN/../lib")
