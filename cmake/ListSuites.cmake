# Writes a file for CTest with one test for each suite of a GoogleTest program. NAME: the tests' prefix; PROGRAM, ARGUMENTS:
# how the program is run; LEFT_OUT: the tests that are not, with colons between them; LONG: the suites that get the label
# "long", or "all"; EACH: one test for each of the program's instead; OUTPUT: the file.
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
    set(tests_of_${suite} "")
  elseif(line MATCHES "^  (.+)$")
    list(APPEND tests_of_${suite} ${CMAKE_MATCH_1})
  endif()
endforeach()
if(NOT suites)
  message(FATAL_ERROR "${PROGRAM} lists no tests")
endif()

list(TRANSFORM ARGUMENTS REPLACE "(.+)" "[==[\\1]==]" OUTPUT_VARIABLE quoted)
list(JOIN quoted " " quoted)
set(content "")
# add(NAME FILTER COST SUITE)
function(add name filter cost suite)
  set(label "")
  if(suite IN_LIST LONG OR LONG STREQUAL "all")
    set(label " LABELS long")
  endif()
  string(APPEND content
    "add_test([==[${NAME}.${name}]==] [==[${PROGRAM}]==] ${quoted} [==[--gtest_filter=${filter}${LEFT_OUT}]==])\n"
    "set_tests_properties([==[${NAME}.${name}]==] PROPERTIES COST ${cost}${label})\n")
  set(content "${content}" PARENT_SCOPE)
endfunction()
foreach(suite IN LISTS suites)
  # The cost, by which CTest starts the longest first, is as many as there are tests, until a run has told better.
  list(LENGTH tests_of_${suite} count)
  if(NOT EACH)
    add(${suite} ${suite}.* ${count} ${suite})
    continue()
  endif()
  foreach(test IN LISTS tests_of_${suite})
    add(${suite}.${test} ${suite}.${test} 1 ${suite})
  endforeach()
endforeach()
file(WRITE ${OUTPUT} "${content}")
