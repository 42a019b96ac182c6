# The Debian packages, one of each component.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL ${packages})
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_SET_DESTDIR ON) # so that what names the prefix does not name the place of the packing
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The maintainers of lparams <maintainers@lparams.invalid>")
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

# describe(COMPONENT SUMMARY LINE...)
macro(describe component summary)
  string(TOUPPER ${component} upper)
  set(lines ${ARGN})
  list(JOIN lines "\n" lines)
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${lines}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME lparams-${component})
endmacro()

describe(agent "settings agent of the VPN gateway"
  "Holds the settings of the VPN gateway as typed parameters, keeps them in one"
  "text file that no crash may lose, and serves them to local clients over a"
  "Unix socket. Contains the agent, the settings module that it loads, and"
  "their units for systemd.")
describe(client "command line of the settings agent of the VPN gateway"
  "Shows and changes the settings of the VPN gateway by their names, checks"
  "every value before anything is written, and has them saved by the agent.")
describe(dev "headers for programs that load the settings module"
  "What a program includes to load the settings module of the VPN gateway into"
  "its own process, with configurations for CMake and pkg-config.")
describe(doc "documentation of the settings agent of the VPN gateway"
  "Every setting, the agent in operation, the protocol of its socket and how the"
  "module is embedded into another program.")

describe(ansible "settings of many VPN gateways, with Ansible"
  "A collection of modules that make the settings and users of VPN gateways what"
  "a playbook says, and tell their state. For the machine that manages the"
  "gateways, which need the package lparams-client.")

set(CPACK_DEBIAN_AGENT_PACKAGE_NAME ${agent_package})
set(CPACK_DEBIAN_AGENT_PACKAGE_SHLIBDEPS ON)
# For the maintainer scripts; any program that makes users from sysusers.d(5) would do.
set(CPACK_DEBIAN_AGENT_PACKAGE_DEPENDS "systemd | systemd-standalone-sysusers | systemd-sysusers")
set(CPACK_DEBIAN_AGENT_PACKAGE_RECOMMENDS lparams-client)
set(CPACK_DEBIAN_AGENT_PACKAGE_SUGGESTS lparams-doc)
set(scripts ${CMAKE_CURRENT_SOURCE_DIR}/debian)
set(CPACK_DEBIAN_AGENT_PACKAGE_CONTROL_EXTRA ${scripts}/postinst ${scripts}/prerm ${scripts}/postrm)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(CPACK_DEBIAN_AGENT_PACKAGE_ARCHITECTURE ${LPARAMS_32BIT_ARCHITECTURE})
  if(LPARAMS_32BIT_ARCHITECTURE STREQUAL amd64)
    string(REPLACE "settings agent" "32-bit settings agent" CPACK_DEBIAN_AGENT_DESCRIPTION
      "${CPACK_DEBIAN_AGENT_DESCRIPTION}")
    set(CPACK_DEBIAN_AGENT_PACKAGE_PROVIDES "lparams-agent (= ${PROJECT_VERSION})")
    set(CPACK_DEBIAN_AGENT_PACKAGE_CONFLICTS lparams-agent)
    set(CPACK_DEBIAN_AGENT_PACKAGE_REPLACES lparams-agent)
  else()
    # An amd64 system has no i386 libraries to ask for the versions that are needed.
    set(CPACK_DEBIAN_AGENT_PACKAGE_SHLIBDEPS OFF)
    set(CPACK_DEBIAN_AGENT_PACKAGE_DEPENDS "libc6 (>= 2.34), libgcc-s1 (>= 4.2), libstdc++6 (>= 12), \
${CPACK_DEBIAN_AGENT_PACKAGE_DEPENDS}")
  endif()
else()
  set(CPACK_DEBIAN_AGENT_PACKAGE_CONFLICTS lparams-agent32)
  set(CPACK_DEBIAN_AGENT_PACKAGE_REPLACES lparams-agent32)
endif()

set(CPACK_DEBIAN_CLIENT_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_CLIENT_PACKAGE_SUGGESTS "lparams-agent, lparams-doc")
set(CPACK_DEBIAN_DEV_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
# The module itself: the host loads it at run time.
set(CPACK_DEBIAN_DEV_PACKAGE_RECOMMENDS lparams-agent)
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS lparams-doc)
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOC_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_ANSIBLE_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_ANSIBLE_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_ANSIBLE_PACKAGE_DEPENDS "ansible-core (>= 2.14)")
set(CPACK_DEBIAN_ANSIBLE_PACKAGE_SUGGESTS lparams-doc)

include(CPack)
