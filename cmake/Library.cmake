# libsurvmeth: the folders from numerics to pictures in one library, static or shared as
# BUILD_SHARED_LIBS says. It stands on the add-in's libraries, which are always shared.
get_property(parts GLOBAL PROPERTY SURVMETH_PARTS)
add_library(libsurvmeth)
add_library(survmeth::survmeth ALIAS libsurvmeth)
foreach(part ${parts})
  if(BUILD_SHARED_LIBS AND TARGET survmeth_${part}_visible)
    set(part ${part}_visible)
  endif()
  target_sources(libsurvmeth PRIVATE $<TARGET_OBJECTS:survmeth_${part}>)
endforeach()
set_target_properties(libsurvmeth PROPERTIES OUTPUT_NAME survmeth EXPORT_NAME survmeth
                                             LINKER_LANGUAGE CXX)
target_include_directories(libsurvmeth INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/survmeth>)
target_compile_features(libsurvmeth INTERFACE cxx_std_20)
# The headers refuse the 80-bit arithmetic too.
target_compile_options(libsurvmeth INTERFACE ${SURVMETH_ARITHMETIC})
target_link_libraries(libsurvmeth PRIVATE survmeth_Dist Threads::Threads)
if(SURVMETH_PROGRAMS)
  target_link_libraries(libsurvmeth PRIVATE survmeth_survival)
endif()
get_property(zlib GLOBAL PROPERTY SURVMETH_ZLIB)
if(zlib)
  target_link_libraries(libsurvmeth PRIVATE $<BUILD_INTERFACE:${zlib}> $<INSTALL_INTERFACE:z>)
endif()
if(BUILD_SHARED_LIBS)
  survmeth_shared(libsurvmeth)
endif()
