#include "standin/host/state/runtime.h"

#include <memory>
#include <utility>

#include "standin/gate/gate.h"

namespace standin::host {
namespace {

struct State {
  Runtime* current = nullptr;
  std::vector<std::unique_ptr<Runtime>> all;
};

State& state() {
  static State* const s = new State;
  return *s;
}

// The version by which plug-in and host agree on layouts.
double agreedVersion() {
  const Settings& set = settings();
  return runtime().versionTold.value_or(set.hasVersion ? set.version : 0);
}

}  // namespace

Runtime& runtime() {
  if (!state().current) die(currentCall(), "no host is running");
  return *state().current;
}

Runtime& beginRuntime(Settings settings) {
  auto runtime = std::make_unique<Runtime>();
  runtime->settings = std::move(settings);
  state().current = runtime.get();
  state().all.push_back(std::move(runtime));
  return *state().current;
}

void endRuntime() {
  state().current = nullptr;
}

bool running() {
  return state().current != nullptr;
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
  return running() && settings().reusesAddresses;
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
