// A running host with the plug-in loaded, for the life of a command.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "standin/gate/gate.h"
#include "standin/host/host.h"
#include "standin/plugin/plugin_file.h"

namespace shotlight {

class Session {
 public:
  // Starts the host and the plug-in of that file; without a name, the dylib built with this program.
  // Throws CommandError when the file is no plug-in or registers no classes.
  explicit Session(const std::string& pluginFile);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // The plug-in's, as "1.2.3"; nothing where its file doesn't tell.
  std::optional<std::string> pluginVersion() const { return plugin_.version(); }

  // For the end of a command that went well, when it holds no host values any more: throws CommandError when
  // the plug-in or the platform holds more than after start-up.
  void close() const;

 private:
  // The host stops before the plug-in that it calls is gone.
  standin::PluginFile plugin_;
  struct Host {
    Host();
    ~Host();
  } host_;
  std::vector<standin::LedgerLine> heldAtStart_;
};

// Throws CommandError for the first host exception since the last check.
void checkExceptions();

}  // namespace shotlight
