# Writes a file for CTest with one test for each suite of a GoogleTest program. NAME: the tests' prefix; PROGRAM, ARGUMENTS:
# how the program is run; LEFT_OUT: the tests that are not, with colons between them; LONG: the suites that get the label
# "long"; OUTPUT: the file.
cmake_policy(SET CMP0057 NEW)  # IN_LIST
if(LEFT_OUT)
  string(PREPEND LEFT_OUT "-")
endif()
execute_process(COMMAND ${PROGRAM} ${ARGUMENTS} --gtest_list_tests --gtest_filter=*${LEFT_OUT}
  OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)

# "Suite.", and below it its tests, two blanks before each. What a test's parameter is doesn't matter here.
string(REGEX REPLACE "[ ]*#[^\n]*" "" listing "${listing}")
string(REPLACE "\n" ";" lines "${listing}")
set(suites "")
foreach(line IN LISTS lines)
  if(line MATCHES "^([^ ]+)\\.$")
    set(suite ${CMAKE_MATCH_1})
    list(APPEND suites ${suite})
    set(tests 0)
  elseif(line MATCHES "^  ")
    math(EXPR tests "${tests} + 1")
    set(tests_of_${suite} ${tests})
  endif()
endforeach()
if(NOT suites)
  message(FATAL_ERROR "${PROGRAM} lists no tests")
endif()

list(TRANSFORM ARGUMENTS REPLACE "(.+)" "[==[\\1]==]" OUTPUT_VARIABLE quoted)
list(JOIN quoted " " quoted)
set(content "")
foreach(suite IN LISTS suites)
  set(label "")
  if(suite IN_LIST LONG)
    set(label " LABELS long")
  endif()
  # The cost, by which CTest starts the longest first, is as many as there are tests, until a run has told better.
  string(APPEND content
    "add_test([==[${NAME}.${suite}]==] [==[${PROGRAM}]==] ${quoted} [==[--gtest_filter=${suite}.*${LEFT_OUT}]==])\n"
    "set_tests_properties([==[${NAME}.${suite}]==] PROPERTIES COST ${tests_of_${suite}}${label})\n")
endforeach()
file(WRITE ${OUTPUT} "${content}")
