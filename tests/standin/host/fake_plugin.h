// A little plug-in to try the host on: one class with members of every kind, its records written by hand in
// either layout.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "standin/gate/gate.h"
#include "standin/host/host.h"

namespace fake {

namespace host = standin::host;

using Object = void*;
using String = void*;

// The entry point, of the function type given; the test fails when the host lacks it.
template <class Function>
Function* entry(const char* name) {
  void* const found = host::resolve(name);
  EXPECT_NE(found, nullptr) << name;
  return reinterpret_cast<Function*>(found);
}

// Host services as a plug-in uses them.
String build(const std::string& bytes, uint32_t encoding = host::kEncodingUtf8);
std::string content(String string);
uint32_t encodingOf(String string);
void lockObject(Object object);
void unlockObject(Object object);
void lockString(String string);
void unlockString(String string);
Object newInstance(const char* className);
Object createArray(int32_t elementType, int32_t upperBound);
void insertObject(Object array, int32_t index, Object value);
void insertString(Object array, int32_t index, String value);
void raise(const char* className, const char* message);

struct Row {
  const void* first;   // a method's function; null for an event
  const void* second;  // a method's setter; null for an event
  const char* text;
};

struct PropertyRow {
  const char* name;
  const char* type;
  uintptr_t getter;
  uintptr_t setter;
  uint32_t parameter;
};

constexpr uintptr_t direct = 0xFFFFFFFF;

// The records of one class, in the layout of a control version. They stay where they are once asked for.
class ClassRecords {
 public:
  ClassRecords(int32_t controlVersion, const char* name, uint32_t dataSize);
  void properties(const std::vector<PropertyRow>& rows);
  void methods(const std::vector<Row>& rows);
  void sharedMethods(const std::vector<Row>& rows);
  void events(const std::vector<const char*>& texts);
  void constants(const std::vector<const char*>& texts);
  void destructor(void (*function)(Object)) { word(6) = address(reinterpret_cast<const void*>(function)); }

  uint32_t& word(int index) { return record_[static_cast<size_t>(index)]; }
  std::vector<uint32_t>& table(int word) { return tables_[word]; }
  uint32_t* record();  // with the tables' addresses in it
  uint32_t eventWord(size_t event) { return tables_[11][event * (old_ ? 2 : 4) + 1]; }

  static uint32_t address(const void* pointer) {
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(pointer));
  }

 private:
  void fill(int word, size_t rowWords, const std::vector<std::vector<uint32_t>>& rows);
  void methodTable(int word, const std::vector<Row>& rows);

  bool old_;
  std::vector<uint32_t> record_;
  std::map<int, std::vector<uint32_t>> tables_;
};

// Registers the class "ThingZNK" and the global method, as a plug-in's start-up does.
void loadPlugin(int32_t controlVersion = 12);
ClassRecords thingRecords(int32_t controlVersion);
uint32_t thingDataOffset();
uint32_t thingEvent(size_t event);
int destroyedThings();  // since the plug-in was loaded

// A running host without and with the plug-in. Each test ends with nothing alive.
class HostTest : public testing::Test {
 protected:
  explicit HostTest(host::Settings settings = {}) { host::start(std::move(settings)); }
  ~HostTest() override;
};

class PluginTest : public HostTest {
 protected:
  explicit PluginTest(int32_t controlVersion = 12, host::Settings settings = {})
      : HostTest(std::move(settings)) {
    loadPlugin(controlVersion);
  }
};

}  // namespace fake
