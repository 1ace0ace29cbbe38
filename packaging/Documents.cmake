# Manual pages, changelog, licence and API reference. What takes a tool that not every builder has is made by the target
# karvex_documents, which no other target waits for.

find_program(KARVEX_HELP2MAN help2man)
find_program(KARVEX_DOXYGEN doxygen)
find_program(KARVEX_GZIP gzip)
add_custom_target(karvex_documents)

# karvex_manual_page(PROGRAM) makes the manual page of a program from what it prints with --help and --version.
function(karvex_manual_page program)
  set(page "${CMAKE_CURRENT_BINARY_DIR}/${program}.1")
  set(added "${CMAKE_CURRENT_SOURCE_DIR}/manual/${program}.h2m")
  add_custom_command(OUTPUT "${page}.gz"
    COMMAND "${KARVEX_HELP2MAN}" --no-info --section=1 "--manual=User Commands" "--source=Karvex ${PROJECT_VERSION}"
      "--include=${added}" "--output=${page}" "$<TARGET_FILE:${program}>"
    COMMAND "${KARVEX_GZIP}" -9nf "${page}"
    DEPENDS ${program} "${added}" VERBATIM)
  add_custom_target(${program}_manual DEPENDS "${page}.gz")
  add_dependencies(karvex_documents ${program}_manual)
  install(FILES "${page}.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT common OPTIONAL)
endfunction()

if(KARVEX_HELP2MAN AND KARVEX_GZIP)
  karvex_manual_page(karvex-console)
  if(KARVEX_WINDOW)
    karvex_manual_page(karvex)
  endif()
endif()

if(KARVEX_DOXYGEN)
  configure_file(Doxyfile.in Doxyfile @ONLY)
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS
    "${PROJECT_SOURCE_DIR}/MIDIKit*/*.hpp" "${PROJECT_SOURCE_DIR}/foundation/*.hpp")
  set(reference "${CMAKE_CURRENT_BINARY_DIR}/reference")
  add_custom_command(OUTPUT "${reference}/done"
    COMMAND "${CMAKE_COMMAND}" -E rm -rf "${reference}"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${reference}"
    COMMAND "${KARVEX_DOXYGEN}" "${CMAKE_CURRENT_BINARY_DIR}/Doxyfile"
    # They belong to menus and folding, which the pages are made without.
    COMMAND "${CMAKE_COMMAND}" -E rm -f "${reference}/html/jquery.js" "${reference}/html/dynsections.js"
    COMMAND "${CMAKE_COMMAND}" -E touch "${reference}/done"
    DEPENDS ${headers} Doxyfile.in reference-header.html "${PROJECT_SOURCE_DIR}/docs/midi-layer.md" VERBATIM)
  add_custom_target(karvex_reference DEPENDS "${reference}/done")
  add_dependencies(karvex_documents karvex_reference)
  install(DIRECTORY "${reference}/html" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/libkarvex-midi-dev"
    COMPONENT midi OPTIONAL)
endif()

file(READ "${PROJECT_SOURCE_DIR}/LICENSE" license)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]*)" copyright "${license}")
set(copyright "${CMAKE_MATCH_1}")
string(FIND "${license}" "Permission is" terms)
string(SUBSTRING "${license}" ${terms} -1 license)
string(STRIP "${license}" license)
string(REPLACE "\n\n" "\n.\n" license "${license}")
string(REPLACE "\n" "\n " license "${license}")
configure_file(copyright.in copyright @ONLY)
if(KARVEX_GZIP)
  file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}")
  execute_process(COMMAND "${KARVEX_GZIP}" -9nc "${CMAKE_CURRENT_SOURCE_DIR}/changelog"
    OUTPUT_FILE "${CMAKE_CURRENT_BINARY_DIR}/changelog.gz" COMMAND_ERROR_IS_FATAL ANY)
endif()

# karvex_package_documents(COMPONENT PACKAGE): each package tells its licence and what changed.
function(karvex_package_documents component package)
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/copyright" "${CMAKE_CURRENT_BINARY_DIR}/changelog.gz"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package}" COMPONENT ${component} OPTIONAL)
endfunction()
