# Runs on the staged files of the packages before they are packed.
cmake_policy(VERSION 3.25)

function(compress file)
  # -n: store no name or time, so that the same files produce the same package.
  execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Make all files readable for everyone, whatever the umask of the build.
function(open_to_all root)
  set(read OWNER_READ GROUP_READ WORLD_READ)
  set(run OWNER_EXECUTE GROUP_EXECUTE WORLD_EXECUTE)
  file(CHMOD_RECURSE ${root} FILE_PERMISSIONS ${read} OWNER_WRITE
       DIRECTORY_PERMISSIONS ${read} ${run} OWNER_WRITE)
  file(GLOB programs ${root}/usr/bin/*)
  if(programs)
    file(CHMOD ${programs} PERMISSIONS ${read} ${run} OWNER_WRITE)
  endif()
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
  set(doc ${share}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  configure_file(${CPACK_QUORL_DEBIAN_COPYRIGHT} ${doc}/copyright COPYONLY)
  configure_file(${CPACK_QUORL_DEBIAN_CHANGELOG} ${doc}/changelog COPYONLY)
  compress(${doc}/changelog)
  # What lintian warns of and is meant to be, each with the reason.
  set(overrides ${CPACK_QUORL_DEBIAN_OVERRIDES}/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  if(EXISTS ${overrides})
    file(COPY ${overrides} DESTINATION ${share}/lintian/overrides)
  endif()
  file(GLOB pages ${share}/man/man1/*.1)
  foreach(page IN LISTS pages)
    compress(${page})
  endforeach()
  # Debian's zsh looks for package completions here.
  if(EXISTS ${share}/zsh/site-functions)
    file(RENAME ${share}/zsh/site-functions ${share}/zsh/vendor-completions)
  endif()
  open_to_all(${CPACK_TEMPORARY_DIRECTORY}/${component})
endforeach()
