// The host's beginning and end, and what host code learns of what the plug-in registered.
#include "standin/host/host.h"

#include <utility>

#include "standin/gate/gate.h"
#include "standin/host/machine/memory.h"
#include "standin/host/program/events.h"
#include "standin/host/program/properties.h"
#include "standin/host/state/runtime.h"
#include "standin/host/things/event_handlers.h"
#include "standin/host/things/handles.h"
#include "standin/host/things/own_classes.h"

namespace standin::host {
namespace {

Member memberOf(MemberKind kind, const Method& method) {
  return {kind, method.declaration.name, method.text, method.setter != nullptr};
}

}  // namespace

Settings oldHost(double version) {
  Settings settings;
  settings.version = version;
  settings.hidden = {"PluginGetStringData", "PluginDisposeStringData", "REALGetStringCFString"};
  return settings;
}

void start(Settings settings) {
  if (running()) throw std::logic_error("the host is running already");
  addOwnClasses(beginRuntime(std::move(settings)).classes);
}

std::vector<std::string> stop() {
  if (!running()) throw std::logic_error("no host is running");
  checkRetiredBlocks();
  endEvents();
  std::vector<std::string> left = abandonEverything();
  for (long& blocks = ledgerLine("host string data"); blocks > 0; --blocks)
    left.emplace_back("host string data");
  endRuntime();
  return left;
}

void releaseEverything() {
  forgetAllHandlers();
  emptyProperties();
  for (const Ref& each : everythingAlive()) each.thing()->empty();
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
  const Class& cls = knownClass(className);
  std::vector<Member> all;
  for (const Property& property : cls.properties) {
    all.push_back({MemberKind::property, property.name, property.name + " As " + describe(property.type),
                   !property.readOnly});
  }
  for (const Method& method : cls.methods) all.push_back(memberOf(MemberKind::method, method));
  for (const Method& method : cls.sharedMethods) all.push_back(memberOf(MemberKind::sharedMethod, method));
  for (const Event& event : cls.events)
    all.push_back({MemberKind::event, event.declaration.name, event.text});
  for (const Constant& constant : cls.constants) {
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
