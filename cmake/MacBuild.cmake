# On a Mac the dylib is built with Apple's SDK and linker. CoreFoundation and the weak CoreServices are named first:
# Carbon re-exports them, and the first library named is the one that a symbol is bound to.
add_library(SpotlightZNK SHARED ${PLUGIN_SOURCES})
target_include_directories(SpotlightZNK PRIVATE ${CMAKE_SOURCE_DIR})
target_compile_options(SpotlightZNK PRIVATE -Wall -Wextra -Werror -fvisibility=hidden -fvisibility-inlines-hidden
  -fno-threadsafe-statics -fno-stack-protector)
target_link_libraries(SpotlightZNK PRIVATE
  "-framework CoreFoundation" "-weak_framework CoreServices" "-framework ApplicationServices" "-framework Carbon")
set_target_properties(SpotlightZNK PROPERTIES PREFIX "" SUFFIX ".dylib" CXX_STANDARD 17
  MACHO_CURRENT_VERSION ${PROJECT_VERSION})
