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
#include <vector>

#include "standin/host/value.h"

namespace standin::host {

enum class Side { host, plugin };

// A thing with a handle. The handle is the address of its block of memory, which the plug-in may look into;
// everything else is the host's own.
class Counted {
 public:
  Counted(size_t size, Side owner);  // one reference, of the owner
  virtual ~Counted() = default;
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  virtual bool isString() const { return false; }
  virtual std::string describe() const = 0;  // "string", "object MDQueryZNK"
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

 private:
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
[[noreturn]] void dieOfWrongThing(const Counted& thing, const char* wanted);
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
// A reference of one side becomes the other's. Taking one ends the process, with the name of the call, when
// the plug-in holds none.
void takeFromPlugin(void* handle, const char* call);
void giveToPlugin(void* handle);

// Takes all that is alive out of the ledger, and tells what it was; see host::stop().
std::vector<std::string> abandonEverything();

}  // namespace standin::host
