# On a Mac the dylib is built with Apple's SDK and linker. CoreFoundation and the weak CoreServices are named first:
# Carbon re-exports them, and the first library named is the one that a symbol is bound to.
add_library(SpotlightZNK SHARED ${PLUGIN_SOURCES})
target_include_directories(SpotlightZNK PRIVATE ${CMAKE_SOURCE_DIR})
# Later systems call much of what the plug-in uses deprecated, and the compiler the C++ library of 10.6 as well.
target_compile_options(SpotlightZNK PRIVATE -Wall -Wextra -Werror -Wno-deprecated -Wno-deprecated-declarations
  -stdlib=libstdc++ -fvisibility=hidden -fvisibility-inlines-hidden -fno-threadsafe-statics -fno-stack-protector)
target_link_libraries(SpotlightZNK PRIVATE
  "-framework CoreFoundation" "-weak_framework CoreServices" "-framework ApplicationServices" "-framework Carbon")
target_link_options(SpotlightZNK PRIVATE -stdlib=libstdc++ -Wno-deprecated -Wl,-exported_symbol,_REALPluginMain)
# The host looks beside its own program. The versions are those that the build on Linux writes.
set_target_properties(SpotlightZNK PROPERTIES PREFIX "" SUFFIX ".dylib" CXX_STANDARD 17
  LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib
  MACOSX_RPATH OFF INSTALL_NAME_DIR @executable_path BUILD_WITH_INSTALL_NAME_DIR ON
  MACHO_CURRENT_VERSION ${PROJECT_VERSION} MACHO_COMPATIBILITY_VERSION 1.0.0)
