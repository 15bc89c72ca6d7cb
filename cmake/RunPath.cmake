# Where an installed library or program looks for the product's libraries, wherever the tree is
# moved. On macOS a library looks where the add-in's hosts have them: the host application's
# folder, the folder of the Office applications, the root folder, the user's own library folder, in
# that order. (The loader leaves a tilde as it is; that entry is there for tools that expand it, and
# the loader's own last resort is the same folder.) A program looks there in the library folder
# beside its own first. Elsewhere a library looks beside itself, a program in that folder.
set(SURVMETH_OFFICE_FOLDER "/Applications/Microsoft Office 2011" CACHE PATH
    "Folder of the Office applications (macOS)")

# In   kind      library (the add-in's) or program
#      apple     whether it is for macOS
#      binToLib  from the folder of programs to that of libraries
function(survmeth_run_path result kind apple binToLib)
  set(path)
  if(apple)
    if(kind STREQUAL program)
      list(APPEND path "@executable_path/${binToLib}")
    endif()
    list(APPEND path "@executable_path" "${SURVMETH_OFFICE_FOLDER}" "/" "~/lib")
  elseif(kind STREQUAL program)
    set(path "$ORIGIN/${binToLib}")
  else()
    set(path "$ORIGIN")
  endif()
  set(${result} "${path}" PARENT_SCOPE)
endfunction()

# Sets a target's run path where nobody gave another one (-DCMAKE_INSTALL_RPATH).
function(survmeth_find_siblings target kind)
  set_target_properties(${target} PROPERTIES BUILD_RPATH_USE_ORIGIN ON)
  if(NOT DEFINED CMAKE_INSTALL_RPATH)
    file(RELATIVE_PATH binToLib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    string(REGEX REPLACE "/$" "" binToLib "${binToLib}")
    survmeth_run_path(path ${kind} "${APPLE}" "${binToLib}")
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "${path}")
  endif()
endfunction()
