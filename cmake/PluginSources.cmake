set(PLUGIN_SOURCES
  host/main.cpp
  host/registration.cpp
  host/exceptions.cpp
  host/build_string.cpp
  host/string_data.cpp
  bridge/cf_to_variant.cpp
  bridge/dates.cpp
  bridge/dictionary_methods.cpp
  bridge/folder_items.cpp
  bridge/strings.cpp
  bridge/variant_to_cf.cpp
  query/batching.cpp
  query/events.cpp
  query/query.cpp
  query/results.cpp
  query/search_scope.cpp
  query/sorting.cpp
  item/attribute_keys.cpp
  item/item.cpp
  item/schema.cpp
  item/search_window.cpp
  item/typed_attributes.cpp)
list(TRANSFORM PLUGIN_SOURCES PREPEND ${CMAKE_SOURCE_DIR}/)

# What runs seldom and gets at least 200 bytes smaller by it is compiled for size, the rest for speed: in the dylibs, and
# in what bench-calls measures (macho_optimisation in cmake/MachODylib.cmake).
set(PLUGIN_SMALL_SOURCES
  host/registration.cpp    # once, at start-up
  item/attribute_keys.cpp  # 169 functions that differ in their key alone
  item/schema.cpp)         # what host code asks once for a key
list(TRANSFORM PLUGIN_SMALL_SOURCES PREPEND ${CMAKE_SOURCE_DIR}/)

# What the undefined-behaviour sanitizer leaves alone in them: the seconds of a date that is infinite are whatever the
# processor makes of them.
set(PLUGIN_UNCHECKED -fno-sanitize=float-cast-overflow)
