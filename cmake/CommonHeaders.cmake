# What sources include of the standard library takes half of their time to compile. It is compiled once for code that may
# lie anywhere, and once for that of programs. A source includes for itself all the same what it uses: `./test --long`
# compiles everything without these (CMAKE_DISABLE_PRECOMPILE_HEADERS).
set(COMMON_HEADERS <algorithm> <cstring> <functional> <map> <memory> <optional> <set> <string> <string_view>
  <unordered_map> <variant> <vector>)

# compile_common_headers(TARGET): for itself, and for targets with the same options that reuse them.
function(compile_common_headers target)
  set_target_properties(${target} PROPERTIES DEFINE_SYMBOL "")  # it would have to be the same for all of them
  target_precompile_headers(${target} PRIVATE ${COMMON_HEADERS})
endfunction()

# as_program_code(TARGET): it is in programs alone. On i386, code that may lie anywhere takes a tenth more instructions.
# With the sanitizers the only common headers are those of the libraries, whose options it then has.
function(as_program_code target)
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
  # As with the libraries whose declarations it sees.
  target_compile_options(${target} PRIVATE -fvisibility=hidden)
  if(SANITIZE)
    target_compile_options(${target} PRIVATE -fPIC)
  else()
    target_compile_options(${target} PRIVATE -fno-pie)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL EXECUTABLE)
      target_link_options(${target} PRIVATE -no-pie)
    else()
      target_link_options(${target} INTERFACE -no-pie)
    endif()
  endif()
endfunction()

# reuse_common_headers(OWNER TARGET...): those that OWNER, with the same options, compiles.
function(reuse_common_headers owner)
  foreach(target IN LISTS ARGN)
    target_compile_options(${target} PRIVATE -fvisibility=hidden)  # as OWNER's
    target_precompile_headers(${target} REUSE_FROM ${owner})
  endforeach()
endfunction()

# reuse_program_headers(TARGET...): those of code that is in programs alone.
function(reuse_program_headers)
  foreach(target IN LISTS ARGN)
    as_program_code(${target})
    if(SANITIZE)
      reuse_common_headers(StandinGate ${target})
    else()
      reuse_common_headers(StandinHost ${target})
    endif()
  endforeach()
endfunction()
