# Debian packages, one per component: run cpack -G DEB in the build folder, or build the target
# package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quorl-js)
set(CPACK_PACKAGE_VENDOR "The Quorl JavaScript Parser Plugin authors")
# Empty: each package has its own summary below.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_COMPONENTS_ALL module development tool python)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER
    "The Quorl JavaScript Parser Plugin authors <maintainers@quorl.example>")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(same_module "quorl-js-plugin (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_MODULE_PACKAGE_NAME quorl-js-plugin)
set(CPACK_DEBIAN_MODULE_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_MODULE_DESCRIPTION
"source structure of JavaScript and HTML as flat records
A module that a host application loads into its process and hands one source
file after the other. The answer is a flat array of structure records: scopes,
classes, functions, branches, loops, lines, page elements and links.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME quorl-js-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ${same_module})
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
"source structure of JavaScript and HTML as flat records (development)
Headers in C and C++, a CMake package and a pkg-config file for projects that
load or link the quorl-js module.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME quorl-js)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
# Loaded at run time, so that the tool which finds dependencies does not see it.
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS 
    "${same_module}, ${QUORL_LIBGIT2_PACKAGE}, ${QUORL_SQLITE3_PACKAGE}, ${QUORL_LIBDEFLATE_PACKAGE}")
set(CPACK_DEBIAN_TOOL_DESCRIPTION
"source structure of JavaScript and HTML as flat records (command line)
Prints the structure records of JavaScript and HTML files, or of any other
text, on standard output.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-quorl-js)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), python3:any, quorl-js (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/python3-quorl-js/postinst
    ${CMAKE_CURRENT_LIST_DIR}/debian/python3-quorl-js/prerm)
set(CPACK_DEBIAN_PYTHON_DESCRIPTION
"source structure of JavaScript and HTML as flat records (Python)
Outlines of source files for Python programs, from the program quorl-js: one
file, many files in parallel, or an index of a code base.")

execute_process(COMMAND date -u -R -d @${QUORL_RELEASE_SECONDS} OUTPUT_VARIABLE QUORL_RELEASE_DATE
                OUTPUT_STRIP_TRAILING_WHITESPACE)

# Debian wants a copyright file and a changelog in each package, and manual pages compressed.
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in ${PROJECT_BINARY_DIR}/debian/changelog
               @ONLY)
set(CPACK_QUORL_DEBIAN_CHANGELOG ${PROJECT_BINARY_DIR}/debian/changelog)
set(CPACK_QUORL_DEBIAN_COPYRIGHT ${CMAKE_CURRENT_LIST_DIR}/debian/copyright)
set(CPACK_QUORL_DEBIAN_OVERRIDES ${CMAKE_CURRENT_LIST_DIR}/debian/overrides)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian/finish.cmake)

include(CPack)
