# zelkovanta_library(NAME [SMALL] SOURCES ... [PUBLIC libs...] [PRIVATE libs...])
#   One folder is one library: target zelkovanta_NAME, alias ZelkoVanta::NAME. Includes are relative to the root.
#
# zelkovanta_small(TARGETS...)
#   For what runs once for each event. The system holds whatever of a program's file is near what runs, on every
#   computer all day, and that code is half as long when it is made to be short.
#
# zelkovanta_test(NAME SOURCES ... LIBRARIES libs... [LABELS labels...] [LAUNCHER command...])
#   One executable of GoogleTest cases, registered with CTest as one test.

set(ZELKOVANTA_WARNINGS
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual
    -Wconversion -Wsign-conversion -Woverloaded-virtual -Wunused -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 takes the frame allocation of Asio's coroutines for a mismatch of new and delete.
  list(APPEND ZELKOVANTA_WARNINGS -Wno-mismatched-new-delete)
endif()

find_package(Threads REQUIRED)
find_package(GTest REQUIRED)

# Part of the C++ library and of Asio that nearly every source sees, compiled once. Targets with the same flags reuse it.
add_library(zelkovanta_precompiled OBJECT "${CMAKE_CURRENT_LIST_DIR}/precompiled.cpp")
target_precompile_headers(zelkovanta_precompiled PRIVATE "${CMAKE_CURRENT_LIST_DIR}/precompiled.h")
target_compile_options(zelkovanta_precompiled PRIVATE ${ZELKOVANTA_WARNINGS})

add_library(zelkovanta_precompiled_tests OBJECT "${CMAKE_CURRENT_LIST_DIR}/precompiled.cpp")
target_precompile_headers(zelkovanta_precompiled_tests PRIVATE "${CMAKE_CURRENT_LIST_DIR}/precompiled_tests.h")
target_compile_options(zelkovanta_precompiled_tests PRIVATE ${ZELKOVANTA_WARNINGS})
target_link_libraries(zelkovanta_precompiled_tests PRIVATE GTest::gmock Threads::Threads)

function(zelkovanta_small)
  foreach(target ${ARGN})
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-Os>)
  endforeach()
endfunction()

# Precompiled headers serve only who is compiled alike.
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  add_library(zelkovanta_precompiled_small OBJECT "${CMAKE_CURRENT_LIST_DIR}/precompiled.cpp")
  target_precompile_headers(zelkovanta_precompiled_small PRIVATE "${CMAKE_CURRENT_LIST_DIR}/precompiled.h")
  target_compile_options(zelkovanta_precompiled_small PRIVATE ${ZELKOVANTA_WARNINGS})
  zelkovanta_small(zelkovanta_precompiled_small)
endif()

function(zelkovanta_library name)
  cmake_parse_arguments(ARG "NO_PRECOMPILED;SMALL" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(zelkovanta_${name} STATIC ${ARG_SOURCES})
  add_library(ZelkoVanta::${name} ALIAS zelkovanta_${name})
  target_include_directories(zelkovanta_${name} PUBLIC "${CMAKE_SOURCE_DIR}")
  target_compile_options(zelkovanta_${name} PRIVATE ${ZELKOVANTA_WARNINGS})
  target_link_libraries(zelkovanta_${name} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
  set(precompiled zelkovanta_precompiled)
  if(ARG_SMALL)
    zelkovanta_small(zelkovanta_${name})
    if(CMAKE_BUILD_TYPE STREQUAL "Release")
      set(precompiled zelkovanta_precompiled_small)
    endif()
  endif()
  if(NOT ARG_NO_PRECOMPILED)
    target_precompile_headers(zelkovanta_${name} REUSE_FROM ${precompiled})
  endif()
endfunction()

function(zelkovanta_test name)
  cmake_parse_arguments(ARG "NO_PRECOMPILED" "TIMEOUT" "SOURCES;LIBRARIES;LABELS;LAUNCHER" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}")
  target_compile_options(${name} PRIVATE ${ZELKOVANTA_WARNINGS})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gmock GTest::gtest_main Threads::Threads)
  if(NOT ARG_NO_PRECOMPILED)
    target_precompile_headers(${name} REUSE_FROM zelkovanta_precompiled_tests)
  endif()
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  add_test(NAME ${name} COMMAND ${ARG_LAUNCHER} $<TARGET_FILE:${name}> WORKING_DIRECTORY "${CMAKE_SOURCE_DIR}")
  # Generated cases are the same in every run; another seed is one RC_PARAMS away.
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}"
                       ENVIRONMENT "RC_PARAMS=seed=20260401")
endfunction()
