#include "standin/host/state/runtime.h"

#include <memory>
#include <utility>

#include "standin/gate/gate.h"

namespace standin::host {
namespace {

constinit Runtime* current = nullptr;
auto& allRuntimes = *new std::vector<std::unique_ptr<Runtime>>;

// The version by which plug-in and host agree on layouts.
double agreedVersion() {
  const Settings& set = settings();
  return runtime().versionTold.value_or(set.hasVersion ? set.version : 0);
}

}  // namespace

Runtime& runtime() {
  if (!current) die(currentCall(), "no host is running");
  return *current;
}

Runtime& beginRuntime(Settings settings) {
  auto runtime = std::make_unique<Runtime>();
  runtime->settings = std::move(settings);
  current = runtime.get();
  allRuntimes.push_back(std::move(runtime));
  return *current;
}

void endRuntime() {
  current = nullptr;
}

bool running() {
  return current != nullptr;
}

Settings& settings() {
  return runtime().settings;
}

bool hasOldStrings() {
  return !(agreedVersion() >= 2012.0);
}

bool hidesArrayStorage() {
  return agreedVersion() > 2013.9;
}

bool reusesAddresses() {
  return current && current->settings.reusesAddresses;
}

const Class* availableClass(std::string_view name) {
  for (const std::string& unknown : settings().unknownClasses) {
    if (sameName(unknown, name)) return nullptr;
  }
  return runtime().classes.find(name);
}

const Class& knownClass(std::string_view name) {
  const Class* const cls = runtime().classes.find(name);
  if (!cls) throw CallError("no class " + std::string(name));
  return *cls;
}

}  // namespace standin::host
