# Everything built on Linux but standin/documents is i386 ELF (the linker and the loader of the Mach-O dylib included):
# the plug-in is 32-bit, and a process loads libraries of its own kind only.
add_compile_options(-m32 -msse2 -mfpmath=sse -Wall -Wextra -Werror)
add_link_options(-m32)
# Sizes and times of 64 bits, also in a process of 32. What the C++ library asks of the system itself has times of 32:
# std::filesystem's status(), file_size() and copy_file() fail for files dated before 1901 or after 2038. Use stat().
add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)

option(RELEASE "Build what ./release publishes: for i386 alone, the same in every folder" OFF)
if(RELEASE)
  add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
endif()

option(FUZZ "Build what libFuzzer calls; takes the sanitizers" OFF)
option(SANITIZE "Build with clang's address and undefined-behaviour sanitizers" OFF)
if(SANITIZE)
  # The host and the loader call functions whose types are known at run time only; and the type of an object that the C++
  # library made is not always found.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize=function,vptr -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  add_compile_definitions(ADDRESS_SANITIZER)
  add_link_options(-fsanitize=address,undefined)
  if(FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
  else()
    # Libraries that were linked apart, the plug-in among them, share what watches them with the programs.
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -m32 -print-file-name=libclang_rt.asan-i386.so
      OUTPUT_VARIABLE runtime OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    cmake_path(GET runtime PARENT_PATH runtime)
    add_link_options(-shared-libasan LINKER:-rpath,${runtime})
    # Its objects of test code and of dylibs are used here; it is brought up to date first, also when only this build is
    # asked for.
    set(PLAIN_BUILD ${CMAKE_SOURCE_DIR}/build/default CACHE PATH "The default build")
    if(NOT EXISTS ${PLAIN_BUILD}/build.ninja)
      execute_process(COMMAND ${CMAKE_COMMAND} --preset default -B ${PLAIN_BUILD} WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
        COMMAND_ERROR_IS_FATAL ANY)
    endif()
  endif()
endif()

# A library that was built apart must be found beside its user, wherever the build folder is moved.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

# ICU's i386 development package pulls in a second C library's headers that clash with g++-multilib, so
# the headers come from the machine's own package and the library is named by its full file name.
find_path(ICU_INCLUDE_DIR unicode/unorm2.h REQUIRED)
file(GLOB ICU_UC_LIBRARY /usr/lib/i386-linux-gnu/libicuuc.so.[0-9][0-9])
if(NOT ICU_UC_LIBRARY)
  message(FATAL_ERROR "ICU for i386 is missing: install libicu72:i386 (./test does)")
endif()

# The system's own folder for i386, which CMake takes for one that the loader would have to be told of: it would be
# searched, at each start, for what is not in it.
list(APPEND CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES /usr/lib/i386-linux-gnu)

# SQLite the same way: headers from the machine's own package, the library by its file name.
find_path(SQLITE_INCLUDE_DIR sqlite3.h REQUIRED)
find_file(SQLITE_LIBRARY libsqlite3.so.0 PATHS /usr/lib/i386-linux-gnu NO_DEFAULT_PATH REQUIRED)

# Headers only.
find_path(JSON_INCLUDE_DIR nlohmann/json.hpp REQUIRED)

# GoogleTest from Debian's source package, compiled here with our flags; the tests of the sanitizer build take the default
# build's (TestPrograms.cmake).
if(NOT SANITIZE)
  set(GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "Sources of GoogleTest")
  set(INSTALL_GTEST OFF)
  set(BUILD_GMOCK OFF)
  add_subdirectory(${GOOGLETEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  foreach(library gtest gtest_main)
    target_compile_options(${library} PRIVATE -O0)
  endforeach()
endif()
