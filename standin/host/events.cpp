#include "standin/host/events.h"

#include <array>
#include <exception>
#include <map>
#include <utility>
#include <vector>

#include "standin/gate/gate.h"
#include "standin/host/conversions.h"
#include "standin/host/entry_points.h"
#include "standin/host/objects.h"
#include "standin/host/runtime.h"

namespace standin::host {
namespace {

// The plug-in calls a handler at its address, with the object and the event's arguments. Which event it is
// follows from the address, which object from the first argument. The addresses are those of a fixed set of
// functions: so many for each number of words that an event's arguments take.
constexpr std::size_t slotsPerCount = 16;
constexpr std::size_t mostArgumentWords = 8;

struct Slot {
  const Class* cls = nullptr;
  const Event* event = nullptr;
};

using Key = std::pair<ObjectHandle, const Event*>;

struct State {
  std::array<std::array<Slot, slotsPerCount>, mostArgumentWords + 1> slots;  // by number of words
  std::map<Key, Handler> handlers;
  std::exception_ptr error;
};

State& state() {
  static State* const s = new State;
  return *s;
}

std::vector<Value> argumentsFrom(const Declaration& declaration, const uint32_t* words, const char* call) {
  std::vector<Value> arguments;
  for (const Parameter& parameter : declaration.parameters) {
    arguments.push_back(readField(parameter.type, words, call));
    words += parameter.type.size() == 8 ? 2 : 1;
  }
  return arguments;
}

void runHandler(std::size_t wordCount, std::size_t index, const uint32_t* words) {
  const Slot slot = state().slots[wordCount][index];
  if (!slot.event) die("(event handler)", "called at an address that was not given out");
  const char* const call = gateName("event " + slot.event->declaration.name);
  const Gate gate(call);
  auto* const handle = reinterpret_cast<ObjectHandle>(static_cast<uintptr_t>(words[0]));
  const auto* const object = dynamic_cast<const HostObject*>(&objectThingAt(handle));
  if (!object || &object->cls != slot.cls) die(call, "the first argument is no " + slot.cls->name);
  const auto found = state().handlers.find({handle, slot.event});
  if (found == state().handlers.end()) die(call, "this object has no handler for the event");
  const std::vector<Value> arguments = argumentsFrom(slot.event->declaration, words + 1, call);
  if (gate.fails()) return;
  const Ref held = Ref::share(handle);
  const Handler handler = found->second;  // a copy: it may detach itself
  try {
    handler(arguments);
  } catch (...) {
    if (!state().error) state().error = std::current_exception();
  }
}

template <std::size_t Index, std::size_t... I>
void trampoline(decltype(static_cast<uint32_t>(I))... words) {
  const uint32_t all[] = {words...};
  runHandler(sizeof...(I) - 1, Index, all);
}

template <std::size_t Index, std::size_t... I>
void* addressOf(std::index_sequence<I...>) {
  return reinterpret_cast<void*>(&trampoline<Index, I...>);
}

template <std::size_t Count, std::size_t... Index>
std::array<void*, slotsPerCount> addressesOf(std::index_sequence<Index...>) {
  // One word more than the event's arguments: the object.
  return {addressOf<Index>(std::make_index_sequence<Count + 1>())...};
}

template <std::size_t... Count>
void* handlerAddress(std::size_t wordCount, std::size_t index, std::index_sequence<Count...>) {
  static const std::array<std::array<void*, slotsPerCount>, sizeof...(Count)> addresses{
      addressesOf<Count>(std::make_index_sequence<slotsPerCount>())...};
  return addresses[wordCount][index];
}

std::size_t wordsOf(const Declaration& declaration) {
  std::size_t words = 0;
  for (const Parameter& parameter : declaration.parameters) words += parameter.type.size() == 8 ? 2 : 1;
  return words;
}

void* addressFor(const Class& cls, const Event& event) {
  const std::size_t words = wordsOf(event.declaration);
  if (words > mostArgumentWords) throw CallError(event.text + ": too many arguments for this host");
  auto& slots = state().slots[words];
  for (std::size_t i = 0; i < slots.size(); ++i) {
    if (slots[i].event && slots[i].event != &event) continue;
    slots[i] = {&cls, &event};
    return handlerAddress(words, i, std::make_index_sequence<mostArgumentWords + 1>());
  }
  throw CallError(event.text + ": more events than this host has handlers for");
}

}  // namespace

void setEventHandler(const Value& object, std::string_view name, Handler handler) {
  const HostObject& instance = instanceIn(object, "an event handler for");
  const ObjectHandle handle = object.reference().object();
  for (const Event& event : instance.cls.events) {
    if (!sameName(event.declaration.name, name)) continue;
    if (handler) {
      addressFor(instance.cls, event);
      state().handlers[{handle, &event}] = std::move(handler);
    } else {
      state().handlers.erase({handle, &event});
    }
    return;
  }
  throw CallError(instance.cls.name + " has no event " + std::string(name));
}

void rethrowHandlerError() {
  if (const std::exception_ptr error = std::exchange(state().error, nullptr)) std::rethrow_exception(error);
}

void forgetHandlers(ObjectHandle object) {
  auto& handlers = state().handlers;
  handlers.erase(handlers.lower_bound({object, nullptr}),
                 handlers.upper_bound({object, reinterpret_cast<const Event*>(UINTPTR_MAX)}));
}

void forgetAllHandlers() {
  state().slots = {};
  state().handlers.clear();
  state().error = nullptr;
}

namespace entry {

void* GetEventInstance(ObjectHandle handle, uint32_t index) {
  const Gate gate("GetEventInstance");
  const auto* const object = dynamic_cast<const HostObject*>(&objectThingAt(handle));
  if (!object) die("GetEventInstance", "the " + objectThingAt(handle).describe() + " has no events");
  for (const Event& event : object->cls.events) {
    if (event.index != index) continue;
    if (gate.fails() || state().handlers.count({handle, &event}) == 0) return nullptr;
    return addressFor(object->cls, event);
  }
  die("GetEventInstance", "the value " + std::to_string(index) +
                              " is not one that the host wrote into an event record of " + object->cls.name);
}

}  // namespace entry
}  // namespace standin::host
