// things/: what host code and the plug-in hold by handles, and how host code makes and reads it.
// The plug-in's calls arrive in entry/; the plug-in's own code runs from here only in constructors and
// destructors. May include machine/, language/, host.h and state/, the gate and Core Foundation's public
// headers.
//
// What the host's handles stand for, and who holds references to it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "standin/host/machine/memory.h"
#include "standin/host/value.h"

namespace standin::host {

enum class Side { host, plugin };

enum class ThingKind { string, array, variant, object };

// A thing with a handle. The handle is the address of its block of memory, which the plug-in may look into;
// everything else is the host's own.
class Counted {
 public:
  Counted(ThingKind kind, size_t size, Side owner);  // one reference, of the owner
  virtual ~Counted() = default;
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  ThingKind kind() const { return kind_; }
  bool isString() const { return kind_ == ThingKind::string; }
  virtual std::string describe() const = 0;  // "string", "object MDQueryZNK", "variant 5"
  virtual BlockName blockName() const = 0;   // what is told of the block once the thing is gone
  // The last reference has gone. May make new ones; if they stay, the thing does.
  virtual void beforeEnd() {}
  // Drops what it holds of other things, as far as the host's side holds it.
  virtual void empty() {}
  // The last reference has gone; the block is still in place.
  virtual void end() {}
  // For things whose storage the plug-in can write to: it may release an element first, and write another one
  // over it afterwards. True when this holds the element; its reference is then not this thing's any more,
  // but the plug-in's.
  virtual bool giveUp(const void*) { return false; }

  void* block() const { return block_; }
  size_t size() const { return size_; }
  uint32_t* words() const { return static_cast<uint32_t*>(block_); }

  long hostReferences = 0;
  long pluginReferences = 0;
  bool ending = false;
  Counted* nextInTable = nullptr;  // the handle table's own
  bool abandoned = false;  // left over from a run that has ended; nobody counts its references any more

 private:
  const ThingKind kind_;
  void* block_;
  size_t size_;
};

// Makes a thing known under its handle. It is owned here from then on, and ends with its last reference.
void addThing(Counted* thing);
template <class Thing>
Thing& added(Thing* thing) {
  addThing(thing);
  return *thing;
}

// The thing behind a handle. A null handle, a freed one and an address that never was a handle end the
// process with the name of the entry point under way.
Counted& thingAt(const void* handle);
// Null when the handle is null or stands for nothing alive.
Counted* findThing(const void* handle);
// The thing of a reference, which is not null: found without looking it up. Ends the process for one of a
// host that was stopped.
Counted& thingOf(const Ref& reference);
[[noreturn]] void dieOfWrongThing(const Counted& thing, const char* wanted);
// The thing as one of the classes that stand for a kind, told by `Thing::kThing`; null for a thing of another
// kind.
template <class Thing>
auto* asKind(Counted& thing) {
  static_assert(std::is_same_v<Thing, typename Thing::OfKind>, "a class derived from that of its kind");
  return thing.kind() == Thing::kThing ? static_cast<Thing*>(&thing) : nullptr;
}
template <class Thing>
const Thing* asKind(const Counted& thing) {
  return asKind<Thing>(const_cast<Counted&>(thing));
}
// The thing as what it must be; anything else ends the process. `wanted` is for the message: "an array".
template <class Thing>
Thing& thingAs(Counted& thing, const char* wanted) {
  auto* const found = dynamic_cast<Thing*>(&thing);
  if (!found) dieOfWrongThing(thing, wanted);
  return *found;
}

// These four do nothing with a null handle.
void retain(void* handle, Side side);
// Ends the process when that side holds no reference.
void release(void* handle, Side side);
// The same for a thing that was looked up already.
void retain(Counted& thing, Side side);
void release(Counted& thing, Side side);
void takeFromPlugin(Counted& thing, const char* call);
// A reference of one side becomes the other's. Taking one ends the process, with the name of the call, when
// the plug-in holds none.
void takeFromPlugin(void* handle, const char* call);
void giveToPlugin(void* handle);

// References to all that is alive.
std::vector<Ref> everythingAlive();
// Takes all that is alive out of the ledger, and tells what it was; see host::stop().
std::vector<std::string> abandonEverything();

}  // namespace standin::host
