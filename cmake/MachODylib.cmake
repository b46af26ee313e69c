# Builds an i386 Mach-O dylib on Linux, with clang's Apple target and macho-link.
find_program(MACHO_CLANG NAMES clang++-14 clang++ REQUIRED)
find_program(DSYMUTIL NAMES dsymutil-14 dsymutil REQUIRED)

set(MACHO_COMPILE_FLAGS
  -target i386-apple-macosx10.6 -std=c++17
  # Otherwise clang calls functions of later systems (memset_pattern16) on its own account.
  -ffreestanding
  -fvisibility=hidden -fvisibility-inlines-hidden -fno-threadsafe-statics -fno-stack-protector
  # This machine's headers describe another system.
  -nostdinc++ -nostdlibinc
  -Wall -Wextra -Werror)
set(MACHO_DEBUG_FLAGS -gdwarf-4 -fforce-dwarf-frame)

# In the dependencies that a compiler tells, ninja understands no path with an apostrophe. So it is told paths that start
# from the build folder, and CMake, which would make them whole, leaves them alone.
cmake_policy(SET CMP0116 OLD)

# from_build(VARIABLE PATH)
function(from_build variable path)
  cmake_path(RELATIVE_PATH path BASE_DIRECTORY ${CMAKE_BINARY_DIR} OUTPUT_VARIABLE relative)
  set(${variable} ${relative} PARENT_SCOPE)
endfunction()

# macho_optimisation(VARIABLE SOURCE): the flag for size or for speed, by PLUGIN_SMALL_SOURCES.
function(macho_optimisation variable source)
  set(flag -O2)
  if(source IN_LIST PLUGIN_SMALL_SOURCES)
    set(flag -Os)
  endif()
  set(${variable} ${flag} PARENT_SCOPE)
endfunction()

# clang_compile(SOURCE OBJECT DESCRIPTION flag...). Folders in the flags start from the build folder, too.
function(clang_compile source object description)
  cmake_path(GET object PARENT_PATH folder)
  file(MAKE_DIRECTORY ${folder})
  from_build(source_name ${source})
  from_build(object_name ${object})
  from_build(root ${CMAKE_SOURCE_DIR})
  macho_optimisation(optimisation ${source})
  add_custom_command(OUTPUT ${object}
    COMMAND ${MACHO_CLANG} ${optimisation} ${ARGN} -fdebug-prefix-map=${root}=${CMAKE_SOURCE_DIR}
            -MD -MF ${object_name}.d -MT ${object_name} -c ${source_name} -o ${object_name}
    WORKING_DIRECTORY ${CMAKE_BINARY_DIR}
    DEPENDS ${source}
    DEPFILE ${object}.d
    COMMENT "Compiling ${description}"
    VERBATIM)
endfunction()

# add_macho_dylib(NAME SOURCES source... IMPORTS list EXPORTED symbol... INSTALL_NAME name VERSION number OUTPUT file
#                 [INCLUDE_DIRS folder...] [HEADERS_ISYSTEM folder...])
#
# Makes the target NAME, built with everything, which produces OUTPUT. The path is also its MACHO_DYLIB property. The
# linker is this build's; with the sanitizers the objects are the default build's, as they would be the same. The target
# NAME-debug, built on request, makes OUTPUT.debug for gdb. Its debug information comes from objects of their own:
# with it clang makes the same code, but orders functions and variables otherwise and describes more frames.
function(add_macho_dylib name)
  cmake_parse_arguments(PARSE_ARGV 1 dylib "" "IMPORTS;INSTALL_NAME;VERSION;OUTPUT"
    "SOURCES;EXPORTED;INCLUDE_DIRS;HEADERS_ISYSTEM")
  foreach(required SOURCES IMPORTS EXPORTED INSTALL_NAME VERSION OUTPUT)
    if(NOT dylib_${required})
      message(FATAL_ERROR "add_macho_dylib(${name}): ${required} is missing")
    endif()
  endforeach()

  set(flags ${MACHO_COMPILE_FLAGS})
  foreach(folder ${dylib_HEADERS_ISYSTEM})
    from_build(folder ${folder})
    list(APPEND flags -isystem ${folder})
  endforeach()
  foreach(folder ${dylib_INCLUDE_DIRS})
    from_build(folder ${folder})
    list(APPEND flags -I${folder})
  endforeach()

  set(objects_folder ${CMAKE_BINARY_DIR}/${name}.macho)
  if(SANITIZE)
    set(objects_folder ${PLAIN_BUILD}/${name}.macho)
  endif()
  set(debug_folder ${CMAKE_BINARY_DIR}/${name}.macho-debug)
  set(objects "")
  set(debug_objects "")
  foreach(source ${dylib_SOURCES})
    cmake_path(ABSOLUTE_PATH source NORMALIZE)
    cmake_path(RELATIVE_PATH source BASE_DIRECTORY ${CMAKE_SOURCE_DIR} OUTPUT_VARIABLE relative)
    string(REPLACE "../" "up/" relative ${relative})
    if(NOT SANITIZE)
      clang_compile(${source} ${objects_folder}/${relative}.o "${relative} for i386 macOS" ${flags})
    endif()
    clang_compile(${source} ${debug_folder}/${relative}.o "${relative} for i386 macOS, with debug information"
      ${flags} ${MACHO_DEBUG_FLAGS})
    # Relative, so that the debug map fits both folders.
    list(APPEND objects ${relative}.o)
    list(APPEND debug_objects ${debug_folder}/${relative}.o)
  endforeach()

  set(exported "")
  foreach(symbol ${dylib_EXPORTED})
    list(APPEND exported -exported ${symbol})
  endforeach()
  list(TRANSFORM objects PREPEND ${objects_folder}/ OUTPUT_VARIABLE object_files)
  if(SANITIZE)
    set_property(GLOBAL APPEND PROPERTY PLAIN_OBJECTS ${object_files})
  else()
    add_custom_target(${name}-objects DEPENDS ${object_files})
    set_property(GLOBAL APPEND PROPERTY PLAIN_TARGETS ${name}-objects)
  endif()
  cmake_path(GET dylib_OUTPUT PARENT_PATH folder)
  file(MAKE_DIRECTORY ${folder})
  add_custom_command(OUTPUT ${dylib_OUTPUT}
    COMMAND macho-link -o ${dylib_OUTPUT} -install_name ${dylib_INSTALL_NAME} -imports ${dylib_IMPORTS}
            ${exported} -current_version ${dylib_VERSION} -minimum-system 10.6 -debug-map ${debug_folder}/map ${objects}
    BYPRODUCTS ${debug_folder}/map
    WORKING_DIRECTORY ${objects_folder}
    DEPENDS macho-link ${object_files} ${dylib_IMPORTS}
    COMMENT "Linking ${dylib_OUTPUT}"
    VERBATIM)
  add_custom_command(OUTPUT ${dylib_OUTPUT}.debug
    COMMAND ${DSYMUTIL} --flat -y ${debug_folder}/map --oso-prepend-path ${debug_folder} -o ${debug_folder}/dwarf
    COMMAND macho-debug-elf ${debug_folder}/dwarf ${dylib_OUTPUT}.debug
    BYPRODUCTS ${debug_folder}/dwarf
    DEPENDS macho-debug-elf ${dylib_OUTPUT} ${debug_objects}
    COMMENT "Collecting the debug information of ${dylib_OUTPUT}"
    VERBATIM)
  add_custom_target(${name} ALL DEPENDS ${dylib_OUTPUT})
  add_custom_target(${name}-debug DEPENDS ${dylib_OUTPUT}.debug)
  add_dependencies(${name}-debug ${name})
  set_target_properties(${name} PROPERTIES MACHO_DYLIB ${dylib_OUTPUT})
endfunction()
