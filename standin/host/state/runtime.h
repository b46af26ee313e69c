// state/: what the running host knows: its settings, its classes, the exceptions that were raised.
// All the rooms above read and change it here; nothing here knows of handles.
// May include language/, host.h and the gate.
//
// One host runs at a time. Its state outlives it: what is still alive of an ended run refers to its classes.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standin/host/host.h"
#include "standin/host/state/classes.h"

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
// None may be running.
Runtime& beginRuntime(Settings settings);
void endRuntime();

// Both by the version that the plug-in was told.
bool hasOldStrings();
bool hidesArrayStorage();
// False also when no host is running.
bool reusesAddresses();

// Null when the class is unknown, or hidden by the settings.
const Class* availableClass(std::string_view name);
// Throws CallError when the class is unknown.
const Class& knownClass(std::string_view name);

}  // namespace standin::host
