# Installs what dependent projects and users need, in three components: module (the plug-in that a
# host loads), development (headers, CMake package, pkg-config file), tool (the command-line host).
#
# "lib" is literal: quorl-js looks for the module in ../lib/quorl-js relative to its own folder, and
# a plug-in directory needs no multiarch path.
include(CMakePackageConfigHelpers)

set(QUORL_PLUGIN_DIR lib/quorl-js)
set(QUORL_INCLUDE_DIR include/quorl-js)
set(QUORL_CMAKE_DIR lib/cmake/QuorlJS)
if(APPLE)
  set(QUORL_PLUGIN_FILE ${QUORL_PLUGIN_DIR}/quorljs.bundle/Contents/MacOS/quorljs)
else()
  set(QUORL_PLUGIN_FILE ${QUORL_PLUGIN_DIR}/quorljs.so)
endif()

# The C++ header holds only the exported declarations of the project's headers, not the internal
# ones in namespaces.
block()
  set(sources ${PROJECT_SOURCE_DIR}/src)
  file(READ ${CMAKE_CURRENT_LIST_DIR}/quorl_js.h.in header)
  string(REGEX MATCHALL "@[a-z_]+/[a-z_]+\\.h@" places "${header}")
  foreach(place IN LISTS places)
    string(REPLACE "@" "" name ${place})
    set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
                 ${sources}/${name})
    file(READ ${sources}/${name} text)
    string(REGEX REPLACE "^.*#pragma once\n" "" text "${text}")
    string(REGEX REPLACE "\n#include [^\n]*" "" text "${text}")
    string(REGEX REPLACE "\nnamespace [a-z]+ {.*}  // namespace [a-z]+\n" "" text "${text}")
    string(REPLACE "extern QUORL_API" "extern QUORL_DATA" text "${text}")
    string(STRIP "${text}" text)
    string(REPLACE "${place}" "${text}" header "${header}")
  endforeach()
  set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
               ${CMAKE_CURRENT_LIST_DIR}/quorl_js.h.in)
  file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/include/quorl_js.h CONTENT "${header}")
endblock()

add_library(quorl_headers INTERFACE)
set_target_properties(quorl_headers PROPERTIES EXPORT_NAME headers)
target_include_directories(quorl_headers INTERFACE $<INSTALL_INTERFACE:${QUORL_INCLUDE_DIR}>)

# A program that links the module may read its data, which requires -fPIC (see quorl_js.h).
target_link_libraries(plugin INTERFACE quorl_headers)
if(NOT APPLE)
  target_compile_options(plugin INTERFACE $<INSTALL_INTERFACE:-fPIC>)
endif()

install(TARGETS plugin EXPORT QuorlJSTargets
        LIBRARY DESTINATION ${QUORL_PLUGIN_DIR} COMPONENT module)
install(TARGETS quorl_headers EXPORT QuorlJSTargets)
install(TARGETS quorl-js RUNTIME DESTINATION bin COMPONENT tool)
install(FILES ${PROJECT_SOURCE_DIR}/src/plugin/plugin_api.h DESTINATION ${QUORL_INCLUDE_DIR}/plugin
        COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/include/quorl_js.h DESTINATION ${QUORL_INCLUDE_DIR}
        COMPONENT development)

install(EXPORT QuorlJSTargets NAMESPACE QuorlJS:: DESTINATION ${QUORL_CMAKE_DIR}
        COMPONENT development)
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/QuorlJSConfig.cmake.in ${PROJECT_BINARY_DIR}/QuorlJSConfig.cmake
  INSTALL_DESTINATION ${QUORL_CMAKE_DIR} PATH_VARS QUORL_PLUGIN_FILE
  NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QuorlJSConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QuorlJSConfig.cmake
              ${PROJECT_BINARY_DIR}/QuorlJSConfigVersion.cmake
        DESTINATION ${QUORL_CMAKE_DIR} COMPONENT development)

configure_file(${CMAKE_CURRENT_LIST_DIR}/quorl-js.pc.in ${PROJECT_BINARY_DIR}/quorl-js.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/quorl-js.pc DESTINATION lib/pkgconfig COMPONENT development)

# What there is to read: the pages lie beside each other, and below README, as their links say.
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION share/doc/quorl-js COMPONENT tool)
install(FILES ${PROJECT_SOURCE_DIR}/docs/cli.md ${PROJECT_SOURCE_DIR}/docs/editors.md
              ${PROJECT_SOURCE_DIR}/docs/json-format.md
              ${PROJECT_SOURCE_DIR}/docs/many-machines.md ${PROJECT_SOURCE_DIR}/docs/record-format.md
        DESTINATION share/doc/quorl-js/docs COMPONENT tool)

# The Python package, for Debian alone: elsewhere pip installs it.
file(GLOB QUORL_PYTHON_FILES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/bindings/python/src/quorl_js/*.py
     ${PROJECT_SOURCE_DIR}/bindings/python/src/quorl_js/py.typed)
install(FILES ${QUORL_PYTHON_FILES} DESTINATION lib/python3/dist-packages/quorl_js COMPONENT python
        EXCLUDE_FROM_ALL)

# quorl-js prints its own completions and fills the manual page, from the table that it reads its
# options by.
set(QUORL_HAS_MAN_PAGE OFF)
if(NOT CMAKE_CROSSCOMPILING)
  block()
    function(generate kind output)
      add_custom_command(OUTPUT ${output} COMMAND quorl-js --generate ${kind} > ${output}
                         WORKING_DIRECTORY ${folder} DEPENDS quorl-js VERBATIM)
    endfunction()
    set(folder ${PROJECT_BINARY_DIR}/share)
    file(MAKE_DIRECTORY ${folder})
    generate(bash ${folder}/quorl-js.bash)
    generate(zsh ${folder}/_quorl-js)
    generate(fish ${folder}/quorl-js.fish)
    set(generated ${folder}/quorl-js.bash ${folder}/_quorl-js ${folder}/quorl-js.fish)
    install(FILES ${folder}/quorl-js.bash RENAME quorl-js COMPONENT tool
            DESTINATION share/bash-completion/completions)
    install(FILES ${folder}/_quorl-js DESTINATION share/zsh/site-functions COMPONENT tool)
    install(FILES ${folder}/quorl-js.fish DESTINATION share/fish/vendor_completions.d
            COMPONENT tool)

    find_program(SCDOC scdoc DOC "Makes the manual page of quorl-js; there is none without it")
    if(NOT SCDOC)
      message(STATUS "No manual page is built: there is no scdoc")
    else()
      set(template ${PROJECT_SOURCE_DIR}/docs/quorl-js.1.scd.in)
      add_custom_command(OUTPUT ${folder}/quorl-js.1.scd DEPENDS quorl-js ${template}
                         COMMAND quorl-js --generate man < ${template} > ${folder}/quorl-js.1.scd
                         VERBATIM)
      # The page carries the release's date, so that the same sources make the same page.
      add_custom_command(OUTPUT ${folder}/quorl-js.1 DEPENDS ${folder}/quorl-js.1.scd
                         COMMAND ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=${QUORL_RELEASE_SECONDS}
                                 ${SCDOC} < ${folder}/quorl-js.1.scd > ${folder}/quorl-js.1
                         VERBATIM)
      list(APPEND generated ${folder}/quorl-js.1)
      install(FILES ${folder}/quorl-js.1 DESTINATION share/man/man1 COMPONENT tool)
      set(QUORL_HAS_MAN_PAGE ON PARENT_SCOPE)
    endif()
    add_custom_target(tool_files ALL DEPENDS ${generated})
  endblock()
endif()
