# SPDX-License-Identifier: MIT
# Language level, warnings, sanitizers and output folders: the same for every room.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# Programs in bin/, the host's libraries in lib/, plug-ins in lib/skindesk/plugins: the layout of an installation,
# so that a program finds its plug-ins beside itself without being installed.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(SKINDESK_PLUGIN_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib/skindesk/plugins)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Precompiled headers are cached as well, which ccache does only when it is told that their time stamps do not matter;
  # and what one build folder compiled serves the next one, also in another clone.
  set(CMAKE_CXX_COMPILER_LAUNCHER
      ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
      CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE_PROGRAM})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-fpch-preprocess)
  endif()
endif()

# Warnings are errors in our own rooms; a float addition stays in the order in which it is written.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align -Woverloaded-virtual -Werror -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ 12 reports these two inside the standard library's own headers when it inlines them.
  add_compile_options(-Wno-restrict -Wno-stringop-overflow)
endif()
# Several shared libraries of one host: calls inside a library need not be replaceable from outside.
add_compile_options(-fno-semantic-interposition)

# A library needs what it calls, not what its rooms may see.
add_link_options(-Wl,--as-needed)

if(SKINDESK_SANITIZE)
  add_compile_options(-fsanitize=${SKINDESK_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${SKINDESK_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # The sanitizers' own branches make g++ 12 lose sight of what is initialised, also in the standard library.
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
endif()
if(SKINDESK_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

# An installed file finds the host's libraries, which lie in lib/skindesk, from where it lies itself. This is the way
# from lib/skindesk/plugins; what lies elsewhere says its own.
set(CMAKE_INSTALL_RPATH "$ORIGIN/..")
