#include "standin/host/program/events.h"

#include <array>
#include <exception>
#include <utility>
#include <vector>

#include "standin/gate/gate.h"
#include "standin/host/host.h"
#include "standin/host/machine/machine_call.h"
#include "standin/host/program/conversions.h"
#include "standin/host/program/gate_name.h"
#include "standin/host/things/event_handlers.h"
#include "standin/host/things/objects.h"

namespace standin::host {
namespace {

// The plug-in calls a handler at its address, with the object and the event's arguments. Which event it is
// follows from the address, which object from the first argument. The addresses are those of a fixed set of
// functions: so many for each number of words that an event's arguments take.
constexpr size_t kSlotsPerCount = 16;
constexpr size_t kMostArgumentWords = 8;

struct Slot {
  const Class* cls = nullptr;
  const Event* event = nullptr;
};

struct State {
  std::array<std::array<Slot, kSlotsPerCount>, kMostArgumentWords + 1> slots;  // by number of words
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
    words += parameter.type.words();
  }
  return arguments;
}

void runHandler(size_t wordCount, size_t index, const uint32_t* words) {
  const Slot slot = state().slots[wordCount][index];
  if (!slot.event) die("(event handler)", "called at an address that was not given out");
  const char* const call = gateName("event " + slot.event->declaration.name);
  const Gate gate(call);
  auto* const handle = static_cast<ObjectHandle>(addressIn(words[0]));
  const auto* const object = asKind<HostObject>(objectThingAt(handle));
  if (!object || !object->cls.isOrDerivesFrom(*slot.cls))
    die(call, "the first argument is no " + slot.cls->name);
  const Handler* const attached = findHandler(handle, *slot.event);
  if (!attached) die(call, "this object has no handler for the event");
  const std::vector<Value> arguments = argumentsFrom(slot.event->declaration, words + 1, call);
  if (gate.fails()) return;
  const Ref held = Ref::share(handle);
  const Handler handler = *attached;  // a copy: it may detach itself
  try {
    handler(arguments);
  } catch (...) {
    if (!state().error) state().error = std::current_exception();
  }
}

template <size_t Index, size_t... I>
void trampoline(decltype(static_cast<uint32_t>(I))... words) {
  const uint32_t all[] = {words...};
  runHandler(sizeof...(I) - 1, Index, all);
}

template <size_t Index, size_t... I>
void* addressOf(std::index_sequence<I...>) {
  return reinterpret_cast<void*>(&trampoline<Index, I...>);
}

template <size_t Count, size_t... Index>
std::array<void*, kSlotsPerCount> addressesOf(std::index_sequence<Index...>) {
  // One word more than the event's arguments: the object.
  return {addressOf<Index>(std::make_index_sequence<Count + 1>())...};
}

template <size_t... Count>
void* slotAddress(size_t wordCount, size_t index, std::index_sequence<Count...>) {
  static const std::array<std::array<void*, kSlotsPerCount>, sizeof...(Count)> addresses{
      addressesOf<Count>(std::make_index_sequence<kSlotsPerCount>())...};
  return addresses[wordCount][index];
}

size_t wordsOf(const Declaration& declaration) {
  size_t words = 0;
  for (const Parameter& parameter : declaration.parameters) words += parameter.type.words();
  return words;
}

}  // namespace

void* handlerAddressFor(const Class& cls, const Event& event) {
  const size_t words = wordsOf(event.declaration);
  if (words > kMostArgumentWords) throw CallError(event.text + ": too many arguments for this host");
  auto& slots = state().slots[words];
  for (size_t i = 0; i < slots.size(); ++i) {
    if (slots[i].event && slots[i].event != &event) continue;
    slots[i] = {&cls, &event};
    return slotAddress(words, i, std::make_index_sequence<kMostArgumentWords + 1>());
  }
  throw CallError(event.text + ": more events than this host has handlers for");
}

void setEventHandler(const Value& object, std::string_view name, Handler handler) {
  const HostObject& instance = instanceIn(object, "an event handler for");
  const ObjectHandle handle = object.reference().object();
  const Event* const event = findEvent(instance.cls, name);
  if (!event) throw CallError(instance.cls.name + " has no event " + std::string(name));
  if (handler) {
    handlerAddressFor(instance.cls.withMembers(), *event);
    attachHandler(handle, *event, std::move(handler));
  } else {
    detachHandler(handle, *event);
  }
}

void rethrowHandlerError() {
  if (const std::exception_ptr error = std::exchange(state().error, nullptr)) std::rethrow_exception(error);
}

void endEvents() {
  state().slots = {};
  forgetAllHandlers();
  state().error = nullptr;
}

}  // namespace standin::host
