// What the host's handles stand for, and who holds references to it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "standin/host/value.h"

namespace standin::host {

enum class Side { host, plugin };

// A thing with a handle. The handle is the address of its block of memory, which the plug-in may look into;
// everything else is the host's own.
class Counted {
 public:
  Counted(std::size_t size, Side owner);  // one reference, of the owner
  virtual ~Counted() = default;
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  virtual bool isString() const { return false; }
  virtual std::string describe() const = 0;  // "string", "object MDQueryZNK"
  // The last reference has gone; the block is still in place.
  virtual void end() {}
  // Leaves to the plug-in the host's reference to a thing that the plug-in can put out of its place here
  // itself, because it reaches that place. False when this holds no such thing.
  virtual bool surrenders(const void*) { return false; }

  void* block() const { return block_; }
  std::size_t size() const { return size_; }
  uint32_t* words() const { return static_cast<uint32_t*>(block_); }

  long hostReferences = 0;
  long pluginReferences = 0;
  bool ending = false;

 private:
  void* block_;
  std::size_t size_;
};

// Makes a thing known under its handle; the registry owns it from then on.
template <class Thing>
Thing& enrol(Thing* thing);
void enrolCounted(Counted* thing);

// The thing behind a handle. A null handle, a freed one and an address that never was a handle end the
// process with the name of the entry point under way.
Counted& thingAt(const void* handle);
// Null when the handle is null or stands for nothing alive.
Counted* findThing(const void* handle);

// A null handle is let pass by all four.
void retain(void* handle, Side side);
// Ends the process when that side holds no reference.
void release(void* handle, Side side);
// A reference changes hands.
void takeFromPlugin(void* handle, const char* call);
void giveToPlugin(void* handle);

// Forgets all that is alive; see host::stop().
std::vector<std::string> abandonEverything();

template <class Thing>
Thing& enrol(Thing* thing) {
  enrolCounted(thing);
  return *thing;
}

}  // namespace standin::host
