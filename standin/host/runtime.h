// The state of the host that is shared among its parts.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standin/host/classes.h"
#include "standin/host/host.h"

namespace standin::host {

struct Runtime {
  Settings settings;
  // What the plug-in takes the host's version to be: what it was last told, 0 when it asked in vain.
  std::optional<double> versionTold;
  std::optional<int32_t> announced;
  std::vector<std::string> registrationErrors;
  ClassTable classes;
  std::vector<Method> globals;
  std::vector<Exception> exceptions;
  std::map<std::string, int> requests;  // of names to the resolver
};

// The running host. Ends the process with a message when none is running.
Runtime& runtime();

// The version by which plug-in and host agree on layouts.
double agreedVersion();
bool hasOldStrings();
bool hidesArrayStorage();

void raise(Exception exception);
// What a raised exception is thrown as when the settings ask for it.
struct Raised {
  Exception exception;
};

}  // namespace standin::host
