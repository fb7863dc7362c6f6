# Debian packages, by `cpack -G DEB`: the libraries, what is needed to build with them, and the tool.

set(CPACK_PACKAGE_VENDOR "Velmora")
set(CPACK_PACKAGE_CONTACT "Velmora developers <developers@velmora.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(TARGET vxpr)
    list(APPEND CPACK_COMPONENTS_ALL tool)
endif()
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_TOOL_DEPENDS runtime)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The tool's dependency on our own libraries is that of the components.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_CURRENT_BINARY_DIR}")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvelmora-xpr${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "The engine parses scripts of expressions, links and optimises them, and
evaluates them frame by frame without allocating.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvelmora-xpr-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "liblog4cplus-dev, libboost-dev (>= 1.74)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "libboost-serialization-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "What a host needs to be built with the engine: headers, and package files for
CMake and pkg-config.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME vxpr)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_TOOL_PACKAGE_SUGGESTS "graphviz")
set(CPACK_COMPONENT_TOOL_DESCRIPTION "The command-line tool vxpr evaluates a script over a recording and writes a table of
the features, checks scripts, and lists the functions that they can call.")

include(CPack)
