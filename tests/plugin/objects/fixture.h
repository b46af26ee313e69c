// The plug-in's own functions in a stand-in host, without a start-up: the test says which version they see.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/owned.h"
#include "host/services.h"
#include "standin/host/host.h"
#include "tests/support/calls.h"
#include "tests/support/ledger.h"

namespace host = standin::host;

// The plug-in's own allocations.
extern bool outOfMemory;            // whether they fail, until the test's end
extern std::vector<size_t> blocks;  // their sizes in order
size_t blocksKept();                // how many of them are not freed

class ObjectsTest : public testing::Test {
 protected:
  // Starts a host, and sets what start-up would set.
  void start(const host::Settings& settings = {});

  // No host object or string is alive when a test ends, and no Core Foundation object.
  void TearDown() override;

 private:
  LedgerLines before_;
};

inline REALstring handle(const host::Value& string) {
  return static_cast<REALstring>(string.handle());
}
inline REALobject objectHandle(const host::Value& object) {
  return static_cast<REALobject>(object.handle());
}

// What a handle of the plug-in's stands for. The reference stays with the plug-in.
host::Value stringOf(REALstring string);
