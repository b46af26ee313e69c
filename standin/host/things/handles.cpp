#include "standin/host/things/handles.h"

#include <memory>
#include <unordered_map>
#include <utility>

#include "standin/gate/gate.h"
#include "standin/host/machine/memory.h"
#include "standin/host/state/runtime.h"
#include "standin/host/things/handle_table.h"

namespace standin::host {
namespace {

// None of these is ever destroyed: references are dropped until the very end.
constinit HandleTable alive;
// Left over from ended runs: kept, so that references to them can still be dropped, and no handle serves
// again.
auto& abandoned = *new std::unordered_map<const void*, std::unique_ptr<Counted>>;
long& stringsAlive = ledgerLine("host string");
long& objectsAlive = ledgerLine("host object");
long& stringLocks = ledgerLine("host string lock");
long& objectLocks = ledgerLine("host object lock");

long& aliveLine(const Counted& thing) {
  return thing.isString() ? stringsAlive : objectsAlive;
}

long& lockLine(const Counted& thing) {
  return thing.isString() ? stringLocks : objectLocks;
}

bool isAbandoned(const void* handle) {
  return abandoned.count(handle) != 0;
}

// Null for a null handle and for one of a run that has ended, to which references may be dropped safely.
Counted* countedAt(const void* handle) {
  if (!handle) return nullptr;
  if (Counted* const thing = findThing(handle)) return thing;
  return isAbandoned(handle) ? nullptr : &thingAt(handle);
}

void add(Counted& thing, Side side, long count) {
  (side == Side::plugin ? thing.pluginReferences : thing.hostReferences) += count;
  if (side == Side::plugin) lockLine(thing) += count;
}

// The plug-in may release an element of an array before it writes another one over it; see Counted::giveUp().
bool givenUpByHolder(Counted& thing) {
  for (Counted* const holder : alive.all()) {
    if (!holder->giveUp(thing.block())) continue;
    giveToPlugin(thing.block());
    return true;
  }
  return false;
}

// What ends with the thing can end more things, and so on; only so many of them within each other.
constexpr size_t kMostEndsWithinEachOther = 100;
size_t endsUnderway = 0;
auto& waitingForTheirEnd = *new std::vector<Counted*>;

void endNow(Counted& thing) {
  thing.beforeEnd();
  thing.ending = thing.hostReferences + thing.pluginReferences == 0;
  if (!thing.ending) return;
  thing.end();
  if (thing.hostReferences + thing.pluginReferences != 0) {
    die(currentCall(),
        "the " + thing.describe() + " was locked while it was being destroyed, and not unlocked");
  }
  --aliveLine(thing);
  retireBlock(thing.block(), thing.size(), thing.blockName());
  // Out of the table before it is destroyed: destroying it releases what it holds, which can end more things.
  alive.remove(thing);
  delete &thing;
}

void endThing(Counted& thing) {
  thing.ending = true;
  if (endsUnderway == kMostEndsWithinEachOther) return waitingForTheirEnd.push_back(&thing);
  ++endsUnderway;
  endNow(thing);
  --endsUnderway;
  while (endsUnderway == 0 && !waitingForTheirEnd.empty()) {
    Counted& next = *waitingForTheirEnd.back();
    waitingForTheirEnd.pop_back();
    endThing(next);
  }
}

}  // namespace

Counted::Counted(ThingKind kind, size_t size, Side owner)
    : kind_(kind), block_(newBlock(size, reusesAddresses())), size_(size) {
  (owner == Side::plugin ? pluginReferences : hostReferences) = 1;
}

void addThing(Counted* thing) {
  alive.add(*thing);
  ++aliveLine(*thing);
  lockLine(*thing) += thing->pluginReferences;
}

Counted* findThing(const void* handle) {
  return alive.find(handle);
}

Counted& thingAt(const void* handle) {
  if (Counted* const thing = findThing(handle)) return *thing;
  if (!handle) die(currentCall(), "a null handle");
  if (const auto name = retiredBlock(handle)) {
    die(currentCall(), "use of a freed handle (it was a " + name->text() + ")");
  }
  if (isAbandoned(handle)) die(currentCall(), "use of a handle of a host that was stopped");
  die(currentCall(), "an address that is no handle of this host");
}

Counted& thingOf(const Ref& reference) {
  Counted* const thing = reference.thing();
  return thing && !thing->abandoned ? *thing : thingAt(reference.get());
}

void dieOfWrongThing(const Counted& thing, const char* wanted) {
  die(currentCall(), "the " + thing.describe() + " was passed where " + wanted + " is expected");
}

void retain(Counted& thing, Side side) {
  if (!thing.abandoned) add(thing, side, 1);
}

void retain(void* handle, Side side) {
  if (Counted* const thing = countedAt(handle)) retain(*thing, side);
}

void release(void* handle, Side side) {
  if (Counted* const thing = countedAt(handle)) release(*thing, side);
}

void release(Counted& thing, Side side) {
  if (thing.abandoned) return;
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
  if (handle) takeFromPlugin(thingAt(handle), call);
}

void takeFromPlugin(Counted& thing, const char* call) {
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

std::vector<Ref> everythingAlive() {
  std::vector<Ref> things;
  for (Counted* const thing : alive.all()) things.push_back(Ref::share(*thing));
  return things;
}

std::vector<std::string> abandonEverything() {
  std::vector<std::string> left;
  const std::vector<Counted*> things = alive.all();
  for (const Counted* const thing : things) {
    left.push_back("host " + thing->describe());  // before any is abandoned: one may describe another
  }
  for (Counted* const thing : things) {
    --aliveLine(*thing);
    lockLine(*thing) -= thing->pluginReferences;
    thing->abandoned = true;
    alive.remove(*thing);
    abandoned.emplace(thing->block(), thing);
  }
  return left;
}

// --- Ref: the host side's references in C++ ---

Ref Ref::adopt(void* handle) {
  return handle ? adopt(thingAt(handle)) : Ref();
}

Ref Ref::adopt(Counted& thing) {
  Ref ref;
  ref.thing_ = &thing;
  return ref;
}

Ref Ref::share(void* handle) {
  return handle ? share(thingAt(handle)) : Ref();
}

Ref Ref::share(Counted& thing) {
  retain(thing, Side::host);
  return adopt(thing);
}

Ref::Ref(const Ref& other) : thing_(other.thing_) {
  if (thing_) retain(*thing_, Side::host);
}

Ref& Ref::operator=(Ref other) noexcept {
  std::swap(thing_, other.thing_);
  return *this;
}

Ref::~Ref() {
  if (thing_) release(*thing_, Side::host);
}

void* Ref::get() const {
  return thing_ ? thing_->block() : nullptr;
}

}  // namespace standin::host
