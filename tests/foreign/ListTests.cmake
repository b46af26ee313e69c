# Writes a file for CTest with the tests of all that uses Core Foundation, over another one. BUILD: the default build;
# LIBRARIES: the folders of libOtherCoreFoundation.so and of what it needs, with colons between them; LONG: whether tests
# that take long, or say what others say, get the label "long"; OUTPUT: the file. Tests of the stand-in's own strictness are
# in suites that are called so, and left out.
cmake_policy(VERSION 3.25)
set(LISTS ${CMAKE_CURRENT_LIST_DIR}/../../cmake/ListSuites.cmake)
# Found before the folders that are linked in (RUNPATH). Not LD_PRELOAD: programs of 64 bits, which some tests start, would
# complain of it.
set(environment LD_LIBRARY_PATH=${BUILD}/lib/foreign:${LIBRARIES})
set(all "")

# over(NAME PROGRAM [argument...] [LONG SUITE...|all] [EACH])
function(over name program)
  cmake_parse_arguments(PARSE_ARGV 2 over "EACH" "" "LONG")
  if(NOT LONG)
    set(over_LONG "")
  endif()
  set(part ${OUTPUT}.${name})
  set(command ${environment} ${BUILD}/bin/${program} ${over_UNPARSED_ARGUMENTS})
  execute_process(COMMAND ${CMAKE_COMMAND} -DNAME=${name} -DPROGRAM=/usr/bin/env "-DARGUMENTS=${command}"
      -DLEFT_OUT=*Strictness.* "-DLONG=${over_LONG}" -DEACH=${over_EACH} -DOUTPUT=${part} -P ${LISTS}
    COMMAND_ERROR_IS_FATAL ANY)
  file(READ ${part} tests)
  file(REMOVE ${part})
  string(APPEND all "${tests}")
  set(all "${all}" PARENT_SCOPE)
endfunction()

over(plugin.foreign plugin-tests --plugin=${BUILD}/lib/libSpotlightZNK.so
  LONG DamagedHeader Hosts/FaultsInUse Hosts/LiveUpdates Names/MissingService Services/PassingThrough)
over(plugin.foreign-dylib plugin-tests --plugin=${BUILD}/lib/SpotlightZNK.dylib LONG all)
over(bridge.foreign bridge-tests --plugin=${BUILD}/lib/libBridgeModule.so)
over(bridge.foreign-dylib bridge-tests --plugin=${BUILD}/tests/plugin/bridge/Bridge.dylib LONG all)
over(objects.foreign objects-tests EACH)
over(corefoundation.foreign corefoundation-tests)
over(system.foreign system-tests)
over(filemanager.foreign filemanager-tests)
over(metadata.foreign metadata-tests LONG all)
over(content.foreign content-tests LONG all)
over(applicationservices.foreign applicationservices-tests)
over(standin-host.foreign standin-host-tests)
get_filename_component(project ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
over(shotlight.foreign shotlight-tests --program=${BUILD}/bin/shotlight --dylib=${BUILD}/lib/SpotlightZNK.dylib
  --elf=${BUILD}/lib/libSpotlightZNK.so --empty-plugin=${BUILD}/lib/libshotlight-empty-plugin.so
  --other-library=${BUILD}/lib/libshotlight-other-library.so --library=${project}/examples/library
  --gdb-script=${project}/macho/debugger/images.py LONG all)
list(TRANSFORM environment REPLACE "(.+)" "[==[\\1]==]" OUTPUT_VARIABLE quoted)
string(APPEND all "add_test(corefoundation.foreign.vectors /usr/bin/env ${quoted}"
  " [==[${BUILD}/bin/cf-vectors]==] [==[${project}/tests/vectors]==])\n")
file(WRITE ${OUTPUT} "${all}")
