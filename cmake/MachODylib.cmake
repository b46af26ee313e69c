# Builds an i386 Mach-O dylib on Linux, with clang's Apple target and macho-link.
find_program(MACHO_CLANG NAMES clang++-14 clang++ REQUIRED)

set(MACHO_COMPILE_FLAGS
  -target i386-apple-macosx10.6 -std=c++17 -O2
  # Otherwise clang calls functions of later systems (memset_pattern16) on its own account.
  -ffreestanding
  -fvisibility=hidden -fvisibility-inlines-hidden -fno-threadsafe-statics -fno-stack-protector
  # This machine's headers describe another system.
  -nostdinc++ -nostdlibinc
  -Wall -Wextra -Werror)

# add_macho_dylib(NAME SOURCES source... IMPORTS list EXPORTED symbol... INSTALL_NAME name OUTPUT file
#                 [INCLUDE_DIRS folder...] [HEADERS_ISYSTEM folder...])
#
# Makes the target NAME, built with everything, which produces OUTPUT. The path is also its MACHO_DYLIB property.
function(add_macho_dylib name)
  cmake_parse_arguments(PARSE_ARGV 1 dylib "" "IMPORTS;INSTALL_NAME;OUTPUT"
    "SOURCES;EXPORTED;INCLUDE_DIRS;HEADERS_ISYSTEM")
  foreach(required SOURCES IMPORTS EXPORTED INSTALL_NAME OUTPUT)
    if(NOT dylib_${required})
      message(FATAL_ERROR "add_macho_dylib(${name}): ${required} is missing")
    endif()
  endforeach()

  set(flags ${MACHO_COMPILE_FLAGS})
  foreach(folder ${dylib_HEADERS_ISYSTEM})
    list(APPEND flags -isystem ${folder})
  endforeach()
  foreach(folder ${dylib_INCLUDE_DIRS})
    list(APPEND flags -I${folder})
  endforeach()

  set(objects "")
  foreach(source ${dylib_SOURCES})
    cmake_path(ABSOLUTE_PATH source NORMALIZE)
    cmake_path(RELATIVE_PATH source BASE_DIRECTORY ${CMAKE_SOURCE_DIR} OUTPUT_VARIABLE relative)
    string(REPLACE "../" "up/" relative ${relative})
    set(object ${CMAKE_BINARY_DIR}/${name}.macho/${relative}.o)
    cmake_path(GET object PARENT_PATH folder)
    file(MAKE_DIRECTORY ${folder})
    add_custom_command(OUTPUT ${object}
      COMMAND ${MACHO_CLANG} ${flags} -MD -MF ${object}.d -MT ${object} -c ${source} -o ${object}
      DEPENDS ${source}
      DEPFILE ${object}.d
      COMMENT "Compiling ${relative} for i386 macOS"
      VERBATIM)
    list(APPEND objects ${object})
  endforeach()

  set(exported "")
  foreach(symbol ${dylib_EXPORTED})
    list(APPEND exported -exported ${symbol})
  endforeach()
  cmake_path(GET dylib_OUTPUT PARENT_PATH folder)
  file(MAKE_DIRECTORY ${folder})
  add_custom_command(OUTPUT ${dylib_OUTPUT}
    COMMAND macho-link -o ${dylib_OUTPUT} -install_name ${dylib_INSTALL_NAME} -imports ${dylib_IMPORTS}
            ${exported} -minimum-system 10.6 ${objects}
    DEPENDS macho-link ${objects} ${dylib_IMPORTS}
    COMMENT "Linking ${dylib_OUTPUT}"
    VERBATIM)
  add_custom_target(${name} ALL DEPENDS ${dylib_OUTPUT})
  set_target_properties(${name} PROPERTIES MACHO_DYLIB ${dylib_OUTPUT})
endfunction()
