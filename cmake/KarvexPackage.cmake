# The CMake package of the MIDI layer: find_package(KarvexMIDI) and its targets karvex::NAME (docs/midi-layer.md).
# `cmake --install TREE --component midi` installs it and nothing else.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# karvex_midi_library(NAME [CORE] [WITHOUT_HEADERS pattern...]) puts karvex::NAME and the headers of its folder into the
# package, the latter as include/karvex/FOLDER/*.hpp. A library that it links must be in the package as well, or be
# found by KarvexMIDIConfig.cmake.in. CORE: it is of the component that needs no other library.
function(karvex_midi_library name)
  cmake_parse_arguments(ARG "CORE" "" "WITHOUT_HEADERS" ${ARGN})
  set(export KarvexMIDITargets)
  if(ARG_CORE)
    set(export KarvexMIDICoreTargets)
  endif()
  set_target_properties(karvex_${name} PROPERTIES EXPORT_NAME ${name})
  install(TARGETS karvex_${name} EXPORT ${export}
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT midi)
  list(TRANSFORM ARG_WITHOUT_HEADERS REPLACE "(.+)" "PATTERN;\\1.hpp;EXCLUDE" OUTPUT_VARIABLE excluded)
  install(DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/karvex"
    COMPONENT midi FILES_MATCHING PATTERN "*.hpp" ${excluded})
endfunction()

set(package_directory "${CMAKE_INSTALL_LIBDIR}/cmake/KarvexMIDI")
configure_package_config_file(
  "${CMAKE_CURRENT_LIST_DIR}/KarvexMIDIConfig.cmake.in" "${PROJECT_BINARY_DIR}/KarvexMIDIConfig.cmake"
  INSTALL_DESTINATION "${package_directory}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/KarvexMIDIConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(
  FILES "${PROJECT_BINARY_DIR}/KarvexMIDIConfig.cmake" "${PROJECT_BINARY_DIR}/KarvexMIDIConfigVersion.cmake"
  DESTINATION "${package_directory}" COMPONENT midi)
install(EXPORT KarvexMIDICoreTargets NAMESPACE karvex:: DESTINATION "${package_directory}" COMPONENT midi)
if(NOT KARVEX_MIDI_CORE_ONLY)
  install(EXPORT KarvexMIDITargets NAMESPACE karvex:: DESTINATION "${package_directory}" COMPONENT midi)
endif()
