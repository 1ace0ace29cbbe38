# Everything comes from the distribution's own packages; tools/packages lists their names.

# MIDIKitCore and what it stands on.
find_package(Threads REQUIRED)
if(KARVEX_MIDI_CORE_ONLY)
  return()
endif()

# What the rest of the MIDI layer and its part of foundation/ need.
find_package(ALSA REQUIRED)
find_package(spdlog REQUIRED)
find_package(fmt REQUIRED)

# Asio is headers only and ships neither a CMake package nor a pkg-config file.
find_path(KARVEX_ASIO_INCLUDE_DIR asio.hpp REQUIRED)
add_library(karvex_asio INTERFACE)
target_include_directories(karvex_asio SYSTEM INTERFACE "${KARVEX_ASIO_INCLUDE_DIR}")
target_compile_definitions(karvex_asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED)
target_link_libraries(karvex_asio INTERFACE Threads::Threads)

if(NOT KARVEX_MIDI_ONLY)
  find_package(PkgConfig REQUIRED)
  find_package(CLI11 REQUIRED)
  find_package(CURL REQUIRED)
  find_package(nlohmann_json REQUIRED)
  find_package(OpenSSL REQUIRED)
  if(KARVEX_WINDOW)
    find_package(Qt6 6.4 REQUIRED COMPONENTS Network Svg Widgets)
  endif()
  pkg_check_modules(hidapi_hidraw REQUIRED IMPORTED_TARGET hidapi-hidraw)
  pkg_check_modules(libudev REQUIRED IMPORTED_TARGET libudev)
  pkg_check_modules(httplib REQUIRED IMPORTED_TARGET cpp-httplib)
endif()
