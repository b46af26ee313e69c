# The test `tidy`: clang-tidy has nothing to say about the plug-in's sources, compiled as for the ELF library
# (.clang-tidy lists the checks). Files are checked in parallel; a finding in any of them makes xargs fail.
# Once is enough: the build with the sanitizers has the same sources.
if(SANITIZE)
  return()
endif()

find_program(CLANG_TIDY NAMES clang-tidy-14 REQUIRED)
include(ProcessorCount)
ProcessorCount(PROCESSORS)
string(REPLACE ";" "\n" tidy_sources "${PLUGIN_SOURCES}")
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/tidy_sources.txt CONTENT "${tidy_sources}\n" @ONLY)
add_test(NAME tidy
  COMMAND xargs -a ${CMAKE_BINARY_DIR}/tidy_sources.txt -d "\\n" -n 1 -P ${PROCESSORS}
    ${CLANG_TIDY} -quiet -p ${CMAKE_BINARY_DIR})
set_tests_properties(tidy PROPERTIES PROCESSORS ${PROCESSORS})
