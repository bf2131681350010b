# SPDX-License-Identifier: MIT
# A room is a folder that becomes one library. It sees exactly the rooms that it links: each room's headers are
# reached through a folder of their own under the build tree, so an include without a link does not compile.

# _room_window(<name> [<as>]): the include folder through which others see the room, as <as>/Header.h (default: <name>/).
function(_room_window name)
  set(as ${name})
  if(ARGC GREATER 1)
    set(as ${ARGV1})
  endif()
  set(window ${CMAKE_BINARY_DIR}/rooms/${name})
  get_filename_component(parent ${window}/${as} DIRECTORY)
  file(MAKE_DIRECTORY ${parent})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${window}/${as} SYMBOLIC)
  set(ROOM_WINDOW ${window} PARENT_SCOPE)
endfunction()

# room_library(<name> HOST|GUEST|DOOR [INCLUDE_AS <path>] [SEES <room>...] [LIBRARIES <target>...] [PRIVATE_LIBRARIES <target>...])
#   HOST   a shared library of the host; *.h in the folder is what others see, src/ is private.
#   GUEST  a static library with hidden symbols, linked into the plug-in.
#   DOOR   a static library for files, desk or Python.
# Sources are every *.cpp in the folder and in src/.
function(room_library name kind)
  cmake_parse_arguments(ROOM "" "INCLUDE_AS" "SEES;LIBRARIES;PRIVATE_LIBRARIES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/src/*.cpp)
  if(kind STREQUAL "HOST")
    add_library(${name} SHARED ${sources})
    # Installed together with its headers, for plug-ins that are built elsewhere: see packaging/SkindeskConfig.cmake.in.
    set_target_properties(${name} PROPERTIES OUTPUT_NAME skindesk_${name} INSTALL_RPATH "$ORIGIN")
    install(TARGETS ${name} EXPORT SkindeskTargets LIBRARY DESTINATION lib/skindesk)
    install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/ DESTINATION include/skindesk/${name} FILES_MATCHING PATTERN "*.h"
            PATTERN src EXCLUDE)
  else()
    add_library(${name} STATIC ${sources})
  endif()
  if(kind STREQUAL "GUEST")
    set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  endif()
  _room_window(${name} ${ROOM_INCLUDE_AS})
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${ROOM_WINDOW}> $<INSTALL_INTERFACE:include/skindesk>
                                     PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ROOM_SEES} ${ROOM_LIBRARIES} PRIVATE ${ROOM_PRIVATE_LIBRARIES})
endfunction()

# test_options(<target>): of the sanitizers' builds, where compiling the tests takes most of the time. What is tested is
# compiled with every check; the tests themselves without those that ask before every access whether the pointer is null
# or crooked, which the address sanitizer notices as well, and without optimisation.
function(test_options target)
  if(SKINDESK_SANITIZE MATCHES "undefined" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -O0 -fno-sanitize=null,alignment,object-size,vptr)
  endif()
endfunction()

# room_tests(<name> [SEES <target>...] [TIMEOUT <seconds>]): every *.cpp of the current folder is one test program.
function(room_tests name)
  cmake_parse_arguments(ROOM "" "TIMEOUT" "SEES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  if(NOT sources)
    return()
  endif()
  if(NOT ROOM_TIMEOUT)
    set(ROOM_TIMEOUT 300)
  endif()
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE ${ROOM_SEES} test_support GTest::gmock rapidcheck test_main)
  target_precompile_headers(${name} REUSE_FROM test_main)
  # -fPIC: as the precompiled headers were compiled. The warning is another that g++ 12 gives about the standard library
  # itself, where texts are added up inline.
  target_compile_options(${name} PRIVATE -fPIC $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds>)
  test_options(${name})
  add_test(NAME ${name} COMMAND ${name} --gtest_output=json:${CMAKE_BINARY_DIR}/test-results/${name}.json)
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ROOM_TIMEOUT})
endfunction()
