// A running host with the plug-in loaded, for the life of a command.
#pragma once

#include <stdexcept>
#include <string>

#include "standin/host/host.h"
#include "standin/plugin/plugin_file.h"

namespace shotlight {

// Something that the program could not do: what, where, and what to do. The program ends with status 2.
struct CommandError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class Session {
 public:
  // Starts the host and the plug-in of that file; of an empty name, the dylib built with this program.
  // Throws CommandError when the file is no plug-in or registers no classes.
  explicit Session(const std::string& pluginFile);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

 private:
  standin::PluginFile plugin_;
};

// Throws CommandError for the first host exception since the last check.
void checkExceptions();

}  // namespace shotlight
