# The two binaries of the plug-in.
set(PLUGIN_FLAGS -fvisibility=hidden -fvisibility-inlines-hidden -fno-threadsafe-statics
    -fno-stack-protector)

# What the plug-in calls, in the order in which the dylib names them.
set(PLATFORM_LIBRARIES CoreFoundation StandinSystem CoreServices ApplicationServices Carbon)

# The objects apart, so that tests can link what a host can't reach.
add_library(SpotlightObjects OBJECT ${PLUGIN_SOURCES})
target_include_directories(SpotlightObjects PUBLIC ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/platform)
target_compile_options(SpotlightObjects PRIVATE ${PLUGIN_FLAGS})
if(SANITIZE)
  target_compile_options(SpotlightObjects PRIVATE ${PLUGIN_UNCHECKED})
endif()
set_target_properties(SpotlightObjects PROPERTIES CXX_STANDARD 17)

add_library(SpotlightZNK MODULE)
target_link_libraries(SpotlightZNK PRIVATE SpotlightObjects)
# --no-as-needed: the plug-in refers to CoreServices weakly, which alone would not keep the library.
target_link_options(SpotlightZNK PRIVATE -Wl,--no-undefined -Wl,--no-as-needed)
target_link_libraries(SpotlightZNK PRIVATE ${PLATFORM_LIBRARIES})

include(MachODylib)
set(PLUGIN_DYLIB ${CMAKE_BINARY_DIR}/lib/SpotlightZNK.dylib)
set(PLUGIN_IMPORTS ${CMAKE_SOURCE_DIR}/cmake/imports.txt)
add_macho_dylib(SpotlightDylib
  SOURCES ${PLUGIN_SOURCES}
  IMPORTS ${PLUGIN_IMPORTS}
  EXPORTED _REALPluginMain
  INSTALL_NAME @executable_path/SpotlightZNK.dylib
  VERSION ${PROJECT_VERSION}
  OUTPUT ${PLUGIN_DYLIB}
  INCLUDE_DIRS ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/platform
  HEADERS_ISYSTEM ${CMAKE_SOURCE_DIR}/platform/freestanding)
