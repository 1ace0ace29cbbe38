# Installs the MIDI layer from TREE into a prefix of its own, and builds and runs the consumer against that.

set(prefix "${SCRATCH}/prefix")
file(REMOVE_RECURSE "${SCRATCH}")
execute_process(
  COMMAND "${CMAKE_COMMAND}" --install "${TREE}" --prefix "${prefix}" --component midi
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

# Nothing of how the libraries were built goes on to those who use them.
file(GLOB_RECURSE descriptions "${prefix}/*.cmake")
foreach(description IN LISTS descriptions)
  file(STRINGS "${description}" leaks REGEX "-Werror|-Wall|-fsanitize|karvex_options|${SOURCES}|${TREE}")
  if(leaks)
    message(FATAL_ERROR "${description} has what concerns nobody else: ${leaks}")
  endif()
endforeach()

# Every installed header stands on its own feet, with nothing but the package to include from.
file(GLOB_RECURSE headers RELATIVE "${prefix}/include/karvex" "${prefix}/include/karvex/*.hpp")
if(NOT headers MATCHES "foundation/run/Queue.hpp" OR NOT headers MATCHES "MIDIKitCore/MIDIOSStatus.hpp")
  message(FATAL_ERROR "Headers are missing: ${headers}")
endif()
list(TRANSFORM headers REPLACE "(.+)" "#include \"\\1\"\n" OUTPUT_VARIABLE includes)
string(JOIN "" every_header ${includes})
file(WRITE "${SCRATCH}/every_header.cpp" "${every_header}")

execute_process(
  COMMAND "${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/consumer" -B "${SCRATCH}/build" -G "${GENERATOR}"
    -D "CMAKE_PREFIX_PATH=${prefix}" -D "CMAKE_CXX_COMPILER=${COMPILER}" -D "CMAKE_CXX_FLAGS=${FLAGS}"
    -D "EVERY_HEADER=${SCRATCH}/every_header.cpp"
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${SCRATCH}/build" COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${SCRATCH}/build/consumer" OUTPUT_VARIABLE said COMMAND_ERROR_IS_FATAL ANY)
string(CONCAT wanted
  "The requested object does not exist. (kMIDIObjectNotFound)\n"
  "Karvex\n"
  "sysEx7(mfr: 0x41, data: [0x01], group: 0x0)\n")
if(NOT said STREQUAL wanted)
  message(FATAL_ERROR "The consumer said: ${said}")
endif()
