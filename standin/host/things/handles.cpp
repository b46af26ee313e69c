#include "standin/host/things/handles.h"

#include <memory>
#include <unordered_map>
#include <utility>

#include "standin/gate/gate.h"
#include "standin/host/machine/memory.h"
#include "standin/host/state/runtime.h"

namespace standin::host {
namespace {

using Registry = std::unordered_map<const void*, std::unique_ptr<Counted>>;

struct State {
  Registry alive;
  Registry abandoned;  // left over from ended runs: kept, so that references to them can still be dropped
};

State& state() {
  static State* const s = new State;  // never destroyed: references are dropped until the very end
  return *s;
}

long& aliveLine(const Counted& thing) {
  static long& strings = ledgerLine("host string");
  static long& objects = ledgerLine("host object");
  return thing.isString() ? strings : objects;
}

long& lockLine(const Counted& thing) {
  static long& strings = ledgerLine("host string lock");
  static long& objects = ledgerLine("host object lock");
  return thing.isString() ? strings : objects;
}

bool isAbandoned(const void* handle) {
  return state().abandoned.count(handle) != 0;
}

void add(Counted& thing, Side side, long count) {
  (side == Side::plugin ? thing.pluginReferences : thing.hostReferences) += count;
  if (side == Side::plugin) lockLine(thing) += count;
}

// The plug-in may release an element of an array before it writes another one over it; see Counted::giveUp().
bool givenUpByHolder(Counted& thing) {
  for (const auto& [handle, holder] : state().alive) {
    if (!holder->giveUp(thing.block())) continue;
    giveToPlugin(thing.block());
    return true;
  }
  return false;
}

void endThing(Counted& thing) {
  thing.ending = true;
  thing.end();
  if (thing.hostReferences + thing.pluginReferences != 0) {
    die(currentCall(),
        "the " + thing.describe() + " was locked while it was being destroyed, and not unlocked");
  }
  --aliveLine(thing);
  retireBlock(thing.block(), thing.size(), thing.describe());
  // Out of the table before it is destroyed: destroying it releases what it holds, which can end more things.
  const auto gone = state().alive.extract(thing.block());
}

}  // namespace

Counted::Counted(size_t size, Side owner) : block_(newBlock(size, reusesAddresses())), size_(size) {
  (owner == Side::plugin ? pluginReferences : hostReferences) = 1;
}

void addThing(Counted* thing) {
  state().alive.emplace(thing->block(), thing);
  ++aliveLine(*thing);
  lockLine(*thing) += thing->pluginReferences;
}

Counted* findThing(const void* handle) {
  const auto found = state().alive.find(handle);
  return found == state().alive.end() ? nullptr : found->second.get();
}

Counted& thingAt(const void* handle) {
  if (Counted* const thing = findThing(handle)) return *thing;
  if (!handle) die(currentCall(), "a null handle");
  if (const std::string* const what = retiredBlock(handle)) {
    die(currentCall(), "use of a freed handle (it was a " + *what + ")");
  }
  if (isAbandoned(handle)) die(currentCall(), "use of a handle of a host that was stopped");
  die(currentCall(), "an address that is no handle of this host");
}

void dieOfWrongThing(const Counted& thing, const char* wanted) {
  die(currentCall(), "the " + thing.describe() + " was passed where " + wanted + " is expected");
}

void retain(void* handle, Side side) {
  if (!handle || isAbandoned(handle)) return;
  add(thingAt(handle), side, 1);
}

void release(void* handle, Side side) {
  if (!handle || isAbandoned(handle)) return;
  Counted& thing = thingAt(handle);
  const long held = side == Side::plugin ? thing.pluginReferences : thing.hostReferences;
  if (held == 0 && !(side == Side::plugin && givenUpByHolder(thing))) {
    const char* const who = side == Side::plugin ? "the plug-in" : "the host";
    die(currentCall(),
        std::string("a release too many: ") + who + " holds no reference to the " + thing.describe());
  }
  add(thing, side, -1);
  if (thing.hostReferences + thing.pluginReferences == 0 && !thing.ending) endThing(thing);
}

void takeFromPlugin(void* handle, const char* call) {
  if (!handle) return;
  Counted& thing = thingAt(handle);
  if (thing.pluginReferences == 0) {
    die(call, "the plug-in handed over a " + thing.describe() + " without a reference");
  }
  add(thing, Side::plugin, -1);
  add(thing, Side::host, 1);
}

void giveToPlugin(void* handle) {
  if (!handle) return;
  Counted& thing = thingAt(handle);
  add(thing, Side::host, -1);
  add(thing, Side::plugin, 1);
}

std::vector<std::string> abandonEverything() {
  std::vector<std::string> left;
  for (auto& [handle, thing] : state().alive) {
    left.push_back("host " + thing->describe());  // before any is abandoned: one may describe another
  }
  for (auto& [handle, thing] : state().alive) {
    --aliveLine(*thing);
    lockLine(*thing) -= thing->pluginReferences;
    state().abandoned.emplace(handle, std::move(thing));
  }
  state().alive.clear();
  return left;
}

// --- Ref: the host side's references in C++ ---

Ref Ref::adopt(void* handle) {
  Ref ref;
  ref.handle_ = handle;
  return ref;
}

Ref Ref::share(void* handle) {
  retain(handle, Side::host);
  return adopt(handle);
}

Ref::Ref(const Ref& other) : handle_(other.handle_) {
  retain(handle_, Side::host);
}

Ref& Ref::operator=(Ref other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

Ref::~Ref() {
  release(handle_, Side::host);
}

}  // namespace standin::host
