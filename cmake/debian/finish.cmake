# Runs on the staged files of the packages, before they are packed.
cmake_policy(VERSION 3.25)

function(compress file)
  # -n: neither a name nor a time, so that the same files make the same package.
  execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
  set(doc ${share}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  configure_file(${CPACK_QUORL_DEBIAN_COPYRIGHT} ${doc}/copyright COPYONLY)
  configure_file(${CPACK_QUORL_DEBIAN_CHANGELOG} ${doc}/changelog COPYONLY)
  compress(${doc}/changelog)
  file(GLOB pages ${share}/man/man1/*.1)
  foreach(page IN LISTS pages)
    compress(${page})
  endforeach()
  # Where Debian's zsh looks for what packages bring.
  if(EXISTS ${share}/zsh/site-functions)
    file(RENAME ${share}/zsh/site-functions ${share}/zsh/vendor-completions)
  endif()
endforeach()
