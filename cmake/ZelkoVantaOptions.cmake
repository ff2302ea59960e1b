# Language, warnings, sanitizers, and the values that a build of the product fixes.

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# One setting for libraries and programs, so that they can share the precompiled headers.
add_compile_options(-fPIC)

set(ZELKOVANTA_SERVER_URL "http://127.0.0.1:8787" CACHE STRING
    "Public base URL of the service, used while a computer is not paired")
set(ZELKOVANTA_UPDATE_HOST "updates.zelkovanta.example" CACHE STRING
    "The one host from which updates are fetched")
set(ZELKOVANTA_WEBSITE "https://www.zelkovanta.example" CACHE STRING
    "Where the links to the terms, the privacy policy and the help pages lead")
set(ZELKOVANTA_SANITIZE "" CACHE STRING "Comma-separated -fsanitize= list, empty for none")
option(ZELKOVANTA_COVERAGE "Instrument for coverage" OFF)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # ccache sees through a precompiled header only in its preprocessed form.
  add_compile_options(-fpch-preprocess -fdiagnostics-color=auto)
  # Where it optimises, GCC 12 finds impossible lengths in its own library's strings.
  foreach(warning array-bounds stringop-overflow restrict)
    add_compile_options($<$<CONFIG:Release>:-Wno-${warning}>)
  endforeach()
endif()

foreach(linker mold lld)
  find_program(LINKER_${linker} NAMES "ld.${linker}")
  if(LINKER_${linker})
    add_link_options("-fuse-ld=${linker}")
    break()
  endif()
endforeach()

add_compile_definitions(
  BOOST_ASIO_SEPARATE_COMPILATION
  BOOST_BEAST_SEPARATE_COMPILATION
  BOOST_ASIO_NO_DEPRECATED
  BOOST_ASIO_DISABLE_BOOST_COROUTINE)

if(ZELKOVANTA_SANITIZE)
  add_compile_options("-fsanitize=${ZELKOVANTA_SANITIZE}" -fno-omit-frame-pointer
                      -fno-sanitize-recover=undefined)
  add_link_options("-fsanitize=${ZELKOVANTA_SANITIZE}")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Instrumented, what is set on every road looks as if it were not; the other builds have this warning.
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
  if(ZELKOVANTA_SANITIZE MATCHES "thread" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Asio's fences, beside the locks that order its work, are unknown to this sanitizer.
    add_compile_options(-Wno-tsan)
  endif()
endif()
if(ZELKOVANTA_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
