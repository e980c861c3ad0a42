# The Debian packages: corvane, corvane-wireshark for its devices in Wireshark, and corvane-simulator for
# machines without a device.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL corvane simulator wireshark)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_CONTACT "The Corvane utility developers <developers@corvane.invalid>")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
  GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

# The device library is the maker's and in no package. The simulator stands in for it here, so that
# it is found and no package depends on it.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/simulator)

set(CPACK_DEBIAN_CORVANE_PACKAGE_NAME corvane)
set(CPACK_DEBIAN_CORVANE_PACKAGE_DEPENDS netbase)  # /etc/services has the port of "ntp"
set(CPACK_DEBIAN_CORVANE_PACKAGE_SUGGESTS "corvane-simulator, bash-completion")
set(CPACK_COMPONENT_CORVANE_DESCRIPTION
"configure and monitor Corvane network capture devices
Features, ports, filters, counters, capture to files, clock and firmware of
Corvane devices, USB Ethernet taps, from the command line; settings as files
that can be compared, applied and tried. Completion for bash, zsh and fish.

The library libCorvaneAPI.so.2 that drives the devices comes from their maker.
The package corvane-simulator has one that simulates them.")
set(CPACK_DEBIAN_WIRESHARK_PACKAGE_NAME corvane-wireshark)
set(CPACK_DEBIAN_WIRESHARK_PACKAGE_RECOMMENDS "wireshark | tshark")
set(CPACK_DEBIAN_WIRESHARK_PACKAGE_SUGGESTS "corvane, corvane-simulator")
set(CPACK_COMPONENT_WIRESHARK_DESCRIPTION
"Corvane network capture devices as interfaces of Wireshark
Corvane devices, USB Ethernet taps, stand in the list of interfaces of
Wireshark and tshark. A click shows live frames of both ports with the
device's own time stamps.

The library libCorvaneAPI.so.2 that drives the devices comes from their maker.
The package corvane-simulator has one that simulates them.")
set(CPACK_DEBIAN_SIMULATOR_PACKAGE_NAME corvane-simulator)
set(CPACK_DEBIAN_SIMULATOR_PACKAGE_SUGGESTS corvane)
set(CPACK_COMPONENT_SIMULATOR_DESCRIPTION
"simulated Corvane network capture devices
A library that takes the place of the one that the maker of Corvane devices
ships. Its devices exist only in a file and a database. With it one can try
the command line tool corvane and test programs that use it. The command
corvane-sim runs any other command with it.")

# Everything in the packages has the date of the release, so that the same sources always give the
# same bytes. The date is in the heading of the changes; SOURCE_DATE_EPOCH overrides it.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md)
file(STRINGS CHANGELOG.md heading REGEX "^## ${PROJECT_VERSION} ")
string(REGEX MATCH "[0-9]+-[0-9]+-[0-9]+$" day "${heading}")
execute_process(COMMAND date -u -d ${day} +%s OUTPUT_VARIABLE epoch
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  set(epoch $ENV{SOURCE_DATE_EPOCH})
endif()
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_BINARY_DIR}/package_date.cmake)
file(WRITE ${CPACK_PROJECT_CONFIG_FILE} "if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  set(ENV{SOURCE_DATE_EPOCH} ${epoch})
endif()
")

install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/corvane
  FILES_MATCHING PATTERN *.md PATTERN wireshark.md EXCLUDE)
install(DIRECTORY contrib/ansible contrib/prometheus contrib/systemd
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/corvane/examples
  PATTERN __pycache__ EXCLUDE)

# What Debian wants in each package.
set(changelog ${CMAKE_BINARY_DIR}/changelog.gz)
add_custom_command(OUTPUT ${changelog}
  COMMAND ${CMAKE_SOURCE_DIR}/packaging/changelog.sh ${PROJECT_VERSION} ${epoch}
    < ${CMAKE_SOURCE_DIR}/CHANGELOG.md | gzip -9n > ${changelog}
  DEPENDS ${CMAKE_SOURCE_DIR}/CHANGELOG.md ${CMAKE_SOURCE_DIR}/packaging/changelog.sh VERBATIM)
add_custom_target(changelog ALL DEPENDS ${changelog})
foreach(component corvane simulator wireshark)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  install(FILES packaging/copyright ${changelog} COMPONENT ${component}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package})
  get_property(maps GLOBAL PROPERTY CORVANE_MAPS_${component})
  list(JOIN maps "\" \"" maps)
  install(CODE "
    if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\" AND NOT \"\$ENV{DESTDIR}\" STREQUAL \"\")
      execute_process(COMMAND \"${CMAKE_SOURCE_DIR}/packaging/finish.sh\" \"\$ENV{DESTDIR}\"
        COMMAND_ERROR_IS_FATAL ANY)
      include(\"${CPACK_PROJECT_CONFIG_FILE}\")
      set(spdx \"\$ENV{DESTDIR}/usr/share/doc/${package}/${package}.spdx.json\")
      execute_process(COMMAND \"${CMAKE_SOURCE_DIR}/packaging/spdx.py\" \"${CMAKE_BINARY_DIR}\"
        \"${CMAKE_MAKE_PROGRAM}\" ${package} ${PROJECT_VERSION} \"${maps}\" COMMAND_ERROR_IS_FATAL ANY
        OUTPUT_FILE \"\${spdx}\")
      file(CHMOD \"\${spdx}\" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    endif()" COMPONENT ${component})
endforeach()

include(CPack)
