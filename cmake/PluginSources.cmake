set(PLUGIN_SOURCES
  host/main.cpp
  host/registration.cpp
  host/exceptions.cpp
  host/string_data.cpp
  host/variant_access.cpp
  bridge/strings.cpp
  query/batching.cpp
  query/query.cpp
  query/results.cpp
  item/item.cpp)
list(TRANSFORM PLUGIN_SOURCES PREPEND ${CMAKE_SOURCE_DIR}/)
