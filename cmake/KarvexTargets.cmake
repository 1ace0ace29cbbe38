# One way to declare a library or a program, so that warnings, sanitizers and include paths are the same everywhere.

include(GNUInstallDirs)

find_program(KARVEX_CCACHE ccache)
if(KARVEX_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${KARVEX_CCACHE}")
endif()

add_library(karvex_options INTERFACE)
target_compile_options(karvex_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
  -Wcast-align -Wformat=2 $<$<BOOL:${KARVEX_WERROR}>:-Werror>
  # A record made with designated initializers leaves out what keeps its default.
  -Wno-missing-field-initializers)
target_include_directories(karvex_options INTERFACE "${PROJECT_SOURCE_DIR}")
if(KARVEX_HARDENING)
  include(CheckPIESupported)
  check_pie_supported()
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  target_compile_options(karvex_options INTERFACE
    -D_FORTIFY_SOURCE=2 -D_GLIBCXX_ASSERTIONS -fstack-protector-strong -fstack-clash-protection
    $<$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},x86_64>:-fcf-protection>)
  target_link_options(karvex_options INTERFACE -Wl,-z,relro -Wl,-z,now)
endif()
if(KARVEX_SANITIZE)
  target_compile_options(karvex_options INTERFACE
    "-fsanitize=${KARVEX_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(karvex_options INTERFACE "-fsanitize=${KARVEX_SANITIZE}")
endif()

# karvex_library(NAME SOURCES ... [PUBLIC target...] [PRIVATE target...]) makes karvex_NAME, known as karvex::NAME.
# Whoever uses an installed one compiles with flags of their own: only the language and the include path go along.
function(karvex_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  if(ARG_SOURCES)
    add_library(karvex_${name} STATIC ${ARG_SOURCES})
    set(users PUBLIC)
  else()
    add_library(karvex_${name} INTERFACE)
    set(users INTERFACE)
  endif()
  target_link_libraries(karvex_${name} ${users} $<BUILD_INTERFACE:karvex_options> ${ARG_PUBLIC})
  if(ARG_PRIVATE)
    target_link_libraries(karvex_${name} PRIVATE ${ARG_PRIVATE})
  endif()
  target_compile_features(karvex_${name} ${users} cxx_std_20)
  target_include_directories(karvex_${name} ${users} "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/karvex>")
  add_library(karvex::${name} ALIAS karvex_${name})
endfunction()

# karvex_program(NAME SOURCES ... LINK target...) makes the program NAME.
function(karvex_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE karvex_options ${ARG_LINK})
endfunction()
