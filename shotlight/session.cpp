#include "shotlight/session.h"

#include <filesystem>

namespace shotlight {
namespace {

namespace host = standin::host;

std::string builtPlugin() {
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  return (program.parent_path().parent_path() / "lib" / "SpotlightZNK.dylib").string();
}

standin::PluginFile open(const std::string& file) {
  try {
    return standin::PluginFile(file.empty() ? builtPlugin() : file);
  } catch (const standin::PluginFileError& error) {
    throw CommandError(std::string("the plug-in ") + error.what());
  }
}

}  // namespace

Session::Session(const std::string& pluginFile) : plugin_(open(pluginFile)) {
  host::start();
  plugin_.main()(host::resolve);
  const auto errors = host::registrationErrors();
  if (!errors.empty()) throw CommandError("the plug-in was refused by the host: " + errors.front());
  if (host::registeredClasses().empty())
    throw CommandError("the plug-in registered no classes; is it the right file?");
}

Session::~Session() {
  host::stop();
}

void checkExceptions() {
  const auto exceptions = host::takeExceptions();
  if (exceptions.empty()) return;
  throw CommandError("the plug-in raised " + exceptions.front().className + ": " +
                     exceptions.front().message);
}

}  // namespace shotlight
