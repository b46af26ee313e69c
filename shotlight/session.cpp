#include "shotlight/session.h"

#include <limits.h>
#include <unistd.h>

#include <map>

#include "shotlight/errors.h"
#include "shotlight/plugin_check.h"
#include "standin/system/paths.h"

namespace shotlight {
namespace {

namespace host = standin::host;

constexpr size_t kFreedBytesKept = 256 * 1024;

std::string builtPlugin() {
  char path[PATH_MAX];
  const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
  if (length <= 0)
    throw CommandError(
        "the plug-in that was built with this program can't be found without /proc; name its file "
        "with --plugin");
  const std::string program(path, static_cast<size_t>(length));
  return standin::parentPath(standin::parentPath(program)) + "/lib/SpotlightZNK.dylib";
}

standin::PluginFile open(const std::string& file) {
  checkPluginFile(file);
  try {
    return standin::PluginFile(file);
  } catch (const standin::PluginFileError& error) {
    throw CommandError(std::string("the plug-in ") + error.what(),
                       {"a plug-in is a Mach-O dylib for i386, or an ELF library for 32-bit Linux"});
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
