# The two kinds of target of this project and the flags that every one of them is built with.

option(FEEDBACK_ASAN "Build with AddressSanitizer, UndefinedBehaviorSanitizer and LeakSanitizer" OFF)
option(FEEDBACK_TSAN "Build with ThreadSanitizer" OFF)

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

set(FEEDBACK_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  list(APPEND FEEDBACK_WARNINGS -Wthread-safety)
endif()

if(FEEDBACK_ASAN)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(FEEDBACK_TSAN)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
endif()

# ThreadSanitizer does not see the lock-free synchronisation inside gRPC's libraries, and gRPC's
# header templates and the generated code hand memory from thread to thread through it. So the few
# files that include them are not instrumented; all others are, and what they hand over is guarded by
# locks of our own.
set(FEEDBACK_BESIDE_GRPC $<$<BOOL:${FEEDBACK_TSAN}>:-fno-sanitize=thread>)

# Includes are written from the root of the tree ("platform/log/log.h"), so that a reader and the
# layer test see the layer of everything that a file uses.
function(feedback_target_defaults name scope)
  target_include_directories(${name} ${scope} ${PROJECT_SOURCE_DIR})
  target_compile_features(${name} ${scope} cxx_std_20)
endfunction()

# feedback_library(NAME SOURCES... [PUBLIC libs...] [PRIVATE libs...])
# Without sources it is a header-only library.
function(feedback_library name)
  cmake_parse_arguments(ARG "" "" "PUBLIC;PRIVATE" ${ARGN})
  if(ARG_UNPARSED_ARGUMENTS)
    add_library(${name} STATIC ${ARG_UNPARSED_ARGUMENTS})
    feedback_target_defaults(${name} PUBLIC)
    target_compile_options(${name} PRIVATE ${FEEDBACK_WARNINGS})
    target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
  else()
    add_library(${name} INTERFACE)
    feedback_target_defaults(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ${ARG_PUBLIC})
  endif()
endfunction()

# feedback_executable(NAME SOURCES... [PRIVATE libs...])
function(feedback_executable name)
  cmake_parse_arguments(ARG "" "" "PRIVATE" ${ARGN})
  add_executable(${name} ${ARG_UNPARSED_ARGUMENTS})
  feedback_target_defaults(${name} PRIVATE)
  target_compile_options(${name} PRIVATE ${FEEDBACK_WARNINGS})
  target_link_libraries(${name} PRIVATE ${ARG_PRIVATE})
endfunction()

# feedback_test(NAME SOURCES... [PRIVATE libs...]): one GoogleTest program; every case is a CTest
# test of its own, so that "./test PATTERN" runs one of them.
function(feedback_test name)
  feedback_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE GTest::gmock_main)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
endfunction()
