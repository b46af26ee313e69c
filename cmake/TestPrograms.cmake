# Test code is compiled once, in the default build and without the sanitizers, and the test programs of both builds are
# linked from its objects: only what is tested is built twice.

if(SANITIZE)
  foreach(library gtest gtest_main)
    add_library(${library} STATIC IMPORTED GLOBAL)
    set_target_properties(${library} PROPERTIES IMPORTED_LOCATION ${PLAIN_BUILD}/lib/lib${library}.a)
  endforeach()
  target_link_libraries(gtest_main INTERFACE gtest)
else()
  # Compiling takes longer than running.
  set(TEST_FLAGS -O0 -g0)
  # What most tests include takes longer to compile than the tests themselves.
  add_library(test-headers OBJECT ${CMAKE_SOURCE_DIR}/tests/support/headers.cpp)
  target_compile_options(test-headers PRIVATE ${TEST_FLAGS})
  target_link_libraries(test-headers PRIVATE gtest)
  target_precompile_headers(test-headers PRIVATE ${CMAKE_SOURCE_DIR}/tests/support/headers.h)
endif()

# add_test_code(NAME SOURCES source... [LIBRARIES target...] [DEFINITIONS definition...])
#
# Makes the object library NAME of test code, whose sources lie in or below the current folder; programs name it among
# their libraries. The definitions are compiled in: they must suit both builds.
function(add_test_code name)
  cmake_parse_arguments(PARSE_ARGV 1 code "" "" "SOURCES;LIBRARIES;DEFINITIONS")
  if(SANITIZE)
    file(RELATIVE_PATH folder ${CMAKE_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
    list(TRANSFORM code_SOURCES PREPEND ${PLAIN_BUILD}/${folder}/CMakeFiles/${name}.dir/ OUTPUT_VARIABLE objects)
    list(TRANSFORM objects APPEND .o)
    add_library(${name} OBJECT IMPORTED GLOBAL)
    set_target_properties(${name} PROPERTIES IMPORTED_OBJECTS "${objects}")
    set_property(GLOBAL APPEND PROPERTY PLAIN_OBJECTS ${objects})
  else()
    add_library(${name} OBJECT ${code_SOURCES})
    target_compile_options(${name} PRIVATE ${TEST_FLAGS})
    target_compile_definitions(${name} PRIVATE ${code_DEFINITIONS})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE ${code_LIBRARIES} gtest)  # whose definitions are in the precompiled header
    target_precompile_headers(${name} REUSE_FROM test-headers)
    set_property(GLOBAL APPEND PROPERTY PLAIN_TARGETS ${name})
  endif()
endfunction()

# add_test_program(NAME SOURCES source... LIBRARIES target... [DEFINITIONS definition...])
#
# Makes the executable NAME of test code and what it tests.
function(add_test_program name)
  cmake_parse_arguments(PARSE_ARGV 1 program "" "" "SOURCES;LIBRARIES;DEFINITIONS")
  add_test_code(${name}-code ${ARGN})
  add_executable(${name} $<TARGET_OBJECTS:${name}-code>)
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_link_libraries(${name} PRIVATE ${program_LIBRARIES})
endfunction()

# add_suites(NAME PROGRAM [argument...] [LEFT_OUT SUITE.TEST...] [LONG SUITE...])
#
# Registers each suite of a test program, run with these arguments, as the test NAME.SUITE, without the tests left out.
# The suites that are LONG, or "all", are run in the long tier only.
function(add_suites name program)
  cmake_parse_arguments(PARSE_ARGV 2 suites "" "" "LEFT_OUT;LONG")
  list(JOIN suites_LEFT_OUT ":" left_out)
  set(file ${CMAKE_CURRENT_BINARY_DIR}/${name}.suites.cmake)
  add_custom_command(TARGET ${program} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -DNAME=${name} -DPROGRAM=$<TARGET_FILE:${program}> "-DARGUMENTS=${suites_UNPARSED_ARGUMENTS}"
      -DLEFT_OUT=${left_out} "-DLONG=${suites_LONG}" -DOUTPUT=${file}
      -P ${CMAKE_SOURCE_DIR}/cmake/ListSuites.cmake
    BYPRODUCTS ${file}
    VERBATIM)
  # Until the program is built there is one test, which fails.
  set(not_built "add_test(${name}.NOT_BUILT ${name}.NOT_BUILT)")
  if(suites_LONG STREQUAL "all")
    string(APPEND not_built "\n  set_tests_properties(${name}.NOT_BUILT PROPERTIES LABELS long)")
  endif()
  file(GENERATE OUTPUT ${file}.include CONTENT
    "if(EXISTS \"${file}\")\n  include(\"${file}\")\nelse()\n  ${not_built}\nendif()\n")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${file}.include)
endfunction()

# Called once, after all test programs.
function(finish_test_programs)
  if(SANITIZE)
    get_property(objects GLOBAL PROPERTY PLAIN_OBJECTS)
    foreach(library gtest gtest_main)
      list(APPEND libraries ${PLAIN_BUILD}/lib/lib${library}.a)
    endforeach()
    add_custom_target(plain-objects
      COMMAND ${CMAKE_COMMAND} --build ${PLAIN_BUILD} --target for-sanitizers
      BYPRODUCTS ${objects} ${libraries}
      COMMENT "Bringing the objects of ${PLAIN_BUILD} up to date"
      VERBATIM)
  else()
    get_property(targets GLOBAL PROPERTY PLAIN_TARGETS)
    add_custom_target(for-sanitizers DEPENDS ${targets} gtest gtest_main)
  endif()
endfunction()
