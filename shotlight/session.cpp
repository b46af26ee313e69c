#include "shotlight/session.h"

#include <filesystem>
#include <map>

#include "shotlight/errors.h"
#include "shotlight/plugin_check.h"

namespace shotlight {
namespace {

namespace host = standin::host;

constexpr size_t kFreedBytesKept = 256 * 1024;

std::string builtPlugin() {
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  return (program.parent_path().parent_path() / "lib" / "SpotlightZNK.dylib").string();
}

standin::PluginFile open(const std::string& file) {
  checkPluginFile(file);
  try {
    return standin::PluginFile(file);
  } catch (const standin::PluginFileError& error) {
    throw CommandError(std::string("the plug-in ") + error.what() +
                       "\na plug-in is a Mach-O dylib for i386, or an ELF library for 32-bit Linux");
  }
}

}  // namespace

Session::Host::Host() {
  standin::setFreedBytesKept(kFreedBytesKept);
  host::start();
}

Session::Host::~Host() {
  host::stop();
}

Session::Session(const std::string& pluginFile)
    : plugin_(open(pluginFile.empty() ? builtPlugin() : pluginFile)) {
  plugin_.main()(host::resolve);
  const auto errors = host::registrationErrors();
  if (!errors.empty()) throw CommandError("the plug-in was refused by the host: " + errors.front());
  if (host::registeredClasses().empty())
    throw CommandError("the plug-in registered no classes; name the right file with --plugin");
  heldAtStart_ = standin::ledger();
}

void Session::close() const {
  std::map<std::string, long> before;
  for (const auto& line : heldAtStart_) before[line.kind] = line.count;
  std::string left;
  for (const auto& [kind, count] : standin::ledger()) {
    if (count > before[kind])
      left += (left.empty() ? "" : ", ") + std::to_string(count - before[kind]) + " " + kind;
  }
  if (!left.empty()) throw CommandError("the plug-in did not give back: " + left);
}

void checkExceptions() {
  const auto exceptions = host::takeExceptions();
  if (exceptions.empty()) return;
  throw CommandError("the plug-in raised " + exceptions.front().className + ": " +
                     exceptions.front().message);
}

}  // namespace shotlight
