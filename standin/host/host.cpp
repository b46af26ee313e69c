#include "standin/host/host.h"

#include <memory>
#include <utility>

#include "standin/gate/gate.h"
#include "standin/host/entry_points.h"
#include "standin/host/events.h"
#include "standin/host/handles.h"
#include "standin/host/memory.h"
#include "standin/host/runtime.h"

namespace standin::host {
namespace {

// Classes outlive their host: what is still alive of an ended run refers to them.
struct State {
  Runtime* current = nullptr;
  std::vector<std::unique_ptr<Runtime>> all;
};

State& state() {
  static State* const s = new State;
  return *s;
}

Member memberOf(MemberKind kind, const Method& method) {
  return {kind, method.declaration.name, method.text, method.setter != nullptr};
}

// Whether this request for a name is to be answered.
bool answers(const std::string& name) {
  Runtime& host = runtime();
  const int request = ++host.requests[name];
  if (host.settings.hidden.count(name) != 0) return false;
  if (name == "REALGetRBVersion" && !host.settings.hasVersion) return false;
  const auto delay = host.settings.delayed.find(name);
  return delay == host.settings.delayed.end() || request >= delay->second;
}

}  // namespace

Settings oldHost(double version) {
  Settings settings;
  settings.version = version;
  settings.hidden = {"PluginGetStringData", "PluginDisposeStringData", "REALGetStringCFString"};
  return settings;
}

Runtime& runtime() {
  if (!state().current) die(currentCall(), "no host is running");
  return *state().current;
}

void start(Settings settings) {
  if (running()) throw std::logic_error("the host is running already");
  auto runtime = std::make_unique<Runtime>();
  runtime->settings = std::move(settings);
  state().current = runtime.get();
  state().all.push_back(std::move(runtime));
}

std::vector<std::string> stop() {
  if (!running()) throw std::logic_error("no host is running");
  checkRetiredBlocks();
  forgetAllHandlers();
  std::vector<std::string> left = abandonEverything();
  for (long& blocks = ledgerLine("host string data"); blocks > 0; --blocks)
    left.emplace_back("host string data");
  state().current = nullptr;
  return left;
}

bool running() {
  return state().current != nullptr;
}

Settings& settings() {
  return runtime().settings;
}

double agreedVersion() {
  const Settings& set = settings();
  return runtime().versionTold.value_or(set.hasVersion ? set.version : 0);
}

bool hasOldStrings() {
  return !(agreedVersion() >= 2012.0);
}

bool hidesArrayStorage() {
  return agreedVersion() > 2013.9;
}

void* standinHostResolve(const char* name) {
  if (!name) die("(resolver)", "a null name");
  const Gate gate(gateName(std::string("resolve ") + name));
  void* const found = !gate.fails() && answers(name) ? entryPoint(name) : nullptr;
  const bool versionDenied = !found && std::string_view(name) == "REALGetRBVersion";
  if (versionDenied && !runtime().versionTold) runtime().versionTold = 0;
  return found;
}

std::optional<int32_t> announcedVersion() {
  return runtime().announced;
}

std::vector<std::string> registrationErrors() {
  return runtime().registrationErrors;
}

std::vector<std::string> registeredClasses() {
  std::vector<std::string> names;
  for (const Class* const cls : runtime().classes.registered()) names.push_back(cls->name);
  return names;
}

std::vector<Member> members(std::string_view className) {
  const Class* const cls = runtime().classes.find(className);
  if (!cls) throw CallError("no class " + std::string(className));
  std::vector<Member> all;
  for (const Property& property : cls->properties) {
    all.push_back({MemberKind::property, property.name, property.name + " As " + describe(property.type),
                   !property.readOnly});
  }
  for (const Method& method : cls->methods) all.push_back(memberOf(MemberKind::method, method));
  for (const Method& method : cls->sharedMethods) all.push_back(memberOf(MemberKind::sharedMethod, method));
  for (const Event& event : cls->events)
    all.push_back({MemberKind::event, event.declaration.name, event.text});
  for (const Constant& constant : cls->constants) {
    all.push_back({MemberKind::constant, constant.declaration.name, constant.text});
  }
  return all;
}

std::vector<Member> globalMethods() {
  std::vector<Member> all;
  for (const Method& method : runtime().globals) all.push_back(memberOf(MemberKind::method, method));
  return all;
}

}  // namespace standin::host
