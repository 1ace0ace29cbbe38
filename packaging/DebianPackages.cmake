# The Debian packages: karvex (the window), karvex-console (without Qt), karvex-common (what both need), and
# libkarvex-midi-dev (the MIDI layer).

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The Karvex developers <developers@karvex.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # Each package has a summary of its own.
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL console common midi)
if(KARVEX_WINDOW)
  list(PREPEND CPACK_COMPONENTS_ALL karvex)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://karvex.example/")
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SOURCE karvex)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# karvex_debian_package(COMPONENT PACKAGE SUMMARY text DESCRIPTION text [DEPENDS text] [RECOMMENDS text] [SECTION name]
# [PROGRAM]). PROGRAM: it links libraries, and needs karvex-common.
macro(karvex_debian_package component package)
  cmake_parse_arguments(DEB "PROGRAM" "SUMMARY;DESCRIPTION;DEPENDS;RECOMMENDS;SECTION" "" ${ARGN})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${DEB_SUMMARY}\n${DEB_DESCRIPTION}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${DEB_DEPENDS}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_RECOMMENDS "${DEB_RECOMMENDS}")
  if(DEB_SECTION)
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${DEB_SECTION})
  endif()
  if(DEB_PROGRAM)
    set(CPACK_DEBIAN_${upper}_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "karvex-common (= ${PROJECT_VERSION}), ca-certificates")
  endif()
  karvex_package_documents(${component} ${package})
endmacro()

# The recommended packages are plugins of the toolkit, which no program links.
karvex_debian_package(karvex karvex PROGRAM
  SUMMARY "firmware updater for musical equipment built on Teensy boards"
  DESCRIPTION
"Karvex shows each connected device with the firmware that it carries and
should carry, and upgrades the selected device and all devices after it, one
at a time. This package has the window."
  RECOMMENDS "qt6-gtk-platformtheme | qt6-xdgdesktopportal-platformtheme, qt6-wayland")

karvex_debian_package(console karvex-console PROGRAM
  SUMMARY "firmware updater for musical equipment, in a terminal"
  DESCRIPTION
"Karvex shows each connected device with the firmware that it carries and
should carry, and upgrades the selected device and all devices after it, one
at a time. This package has the terminal front, for machines without a screen."
  RECOMMENDS "udev")

karvex_debian_package(common karvex-common
  SUMMARY "firmware updater for musical equipment: rules and manual pages"
  DESCRIPTION
"The rules by which the user at the machine reaches the boards that Karvex
upgrades, and by which modem managers and MTP probes leave them alone, and the
manual pages of both fronts."
  RECOMMENDS "udev")
set(CPACK_DEBIAN_COMMON_PACKAGE_ARCHITECTURE all)

karvex_debian_package(midi libkarvex-midi-dev SECTION libdevel
  SUMMARY "general MIDI library in C++20, development files"
  DESCRIPTION
"The MIDI layer of Karvex as static libraries with a CMake package: events of
MIDI 1.0 and 2.0 as values, parsers, system exclusive, and devices, ports,
packets and connections on the sequencer of the system. The component Core
needs no other library."
  DEPENDS "libasound2-dev, libspdlog-dev")

include(CPack)
