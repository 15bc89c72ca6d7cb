# What a build by Emscripten takes besides: exceptions as WebAssembly has them, and the headers of
# this machine's libraries that know no machine. Those are reached one by one, by links, because the
# C library's headers stand beside them. No threads, no gnuplot, no zlib.
set(webHeaders ${CMAKE_BINARY_DIR}/include)
foreach(library nlohmann fast_float fmt)
  find_path(SURVMETH_${library}_HEADERS ${library} PATHS /usr/include /usr/local/include
            NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  file(MAKE_DIRECTORY ${webHeaders})
  file(CREATE_LINK ${SURVMETH_${library}_HEADERS}/${library} ${webHeaders}/${library} SYMBOLIC)
endforeach()
add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
target_include_directories(survmeth_options SYSTEM INTERFACE $<BUILD_INTERFACE:${webHeaders}>)
target_compile_options(survmeth_options INTERFACE -fwasm-exceptions)
