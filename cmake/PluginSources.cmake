set(PLUGIN_SOURCES
  host/main.cpp
  host/registration.cpp
  host/exceptions.cpp
  bridge/string_data.cpp
  bridge/strings.cpp
  query/batching.cpp
  query/events.cpp
  query/query.cpp
  query/results.cpp
  item/item.cpp
  item/search_window.cpp)
list(TRANSFORM PLUGIN_SOURCES PREPEND ${CMAKE_SOURCE_DIR}/)
