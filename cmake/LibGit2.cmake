# The program loads libgit2 at run time. QUORL_LIBGIT2 is the name to load it by, which programs that
# are linked to it have in them; QUORL_LIBGIT2_PACKAGE the Debian package that is named after it.
find_package(PkgConfig REQUIRED)
pkg_check_modules(LIBGIT2 REQUIRED libgit2>=1.5)
list(GET LIBGIT2_LINK_LIBRARIES 0 QUORL_LIBGIT2)
if(NOT APPLE)
  execute_process(COMMAND ${CMAKE_READELF} -d ${QUORL_LIBGIT2} OUTPUT_VARIABLE dynamic
                  COMMAND_ERROR_IS_FATAL ANY)
  if(NOT dynamic MATCHES "soname: \\[([^]]+)\\]")
    message(FATAL_ERROR "${QUORL_LIBGIT2} has no soname")
  endif()
  set(QUORL_LIBGIT2 ${CMAKE_MATCH_1})
  string(REPLACE ".so." "-" QUORL_LIBGIT2_PACKAGE ${QUORL_LIBGIT2})
endif()
