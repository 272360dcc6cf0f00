# Libraries that the program loads at run time, and only where it needs them: starting takes a few
# milliseconds, and they would double that. For each, QUORL_<NAME> is the name to load it by, which
# programs that are linked to it have in them; QUORL_<NAME>_PACKAGE the Debian package that is named
# after it.
find_package(PkgConfig REQUIRED)
function(find_runtime_library name module package)
  pkg_check_modules(${name} ${module})
  if(NOT ${name}_FOUND)
    message(FATAL_ERROR "${module} was not found; Debian has it in the package ${package}")
  endif()
  list(GET ${name}_LINK_LIBRARIES 0 library)
  if(NOT APPLE)
    execute_process(COMMAND ${CMAKE_READELF} -d ${library} OUTPUT_VARIABLE dynamic
                    COMMAND_ERROR_IS_FATAL ANY)
    if(NOT dynamic MATCHES "soname: \\[([^]]+)\\]")
      message(FATAL_ERROR "${library} has no soname")
    endif()
    set(library ${CMAKE_MATCH_1})
    # libgit2.so.1.5 is in libgit2-1.5, libdeflate.so.0 in libdeflate0.
    string(REGEX REPLACE "([0-9])\\.so\\." "\\1-" runtime_package ${library})
    string(REPLACE ".so." "" runtime_package ${runtime_package})
    set(QUORL_${name}_PACKAGE ${runtime_package} PARENT_SCOPE)
  endif()
  set(QUORL_${name} ${library} PARENT_SCOPE)
  set(${name}_INCLUDE_DIRS ${${name}_INCLUDE_DIRS} PARENT_SCOPE)
endfunction()
find_runtime_library(LIBGIT2 libgit2>=1.5 libgit2-dev)
find_runtime_library(SQLITE3 sqlite3>=3.40 libsqlite3-dev)
find_runtime_library(LIBDEFLATE libdeflate>=1.8 libdeflate-dev)

# The hash of file contents is compiled in.
pkg_check_modules(XXHASH libxxhash>=0.8)
if(NOT XXHASH_FOUND)
  message(FATAL_ERROR "libxxhash was not found; Debian has it in the package libxxhash-dev")
endif()
