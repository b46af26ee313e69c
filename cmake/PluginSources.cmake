set(PLUGIN_SOURCES
  host/main.cpp
  host/registration.cpp
  host/exceptions.cpp
  bridge/cf_to_variant.cpp
  bridge/dates.cpp
  bridge/dictionary_methods.cpp
  bridge/folder_items.cpp
  bridge/string_data.cpp
  bridge/strings.cpp
  bridge/variant_to_cf.cpp
  query/batching.cpp
  query/events.cpp
  query/query.cpp
  query/results.cpp
  item/item.cpp
  item/search_window.cpp)
list(TRANSFORM PLUGIN_SOURCES PREPEND ${CMAKE_SOURCE_DIR}/)
