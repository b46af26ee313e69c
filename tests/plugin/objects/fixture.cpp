#include "tests/plugin/objects/fixture.h"

#include "host/startup.h"

bool outOfMemory = false;
std::vector<size_t> blocks;

// This program is linked with --wrap=calloc.
extern "C" void* __real_calloc(size_t count, size_t size);
extern "C" void* __wrap_calloc(size_t count, size_t size) {
  blocks.push_back(count * size);
  return outOfMemory ? nullptr : __real_calloc(count, size);
}

// An old host's tables are kept for the life of the process on purpose, also when a test's own record goes.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:MyREALRegisterClass\n";
}

void ObjectsTest::start(const host::Settings& settings) {
  before_ = standin::ledger();
  host::start(settings);
  gResolver = host::resolve;
  rbversion = settings.hasVersion ? settings.version : 0.0;
}

void ObjectsTest::TearDown() {
  outOfMemory = false;
  standin::clearFailures();
  if (!host::running()) return;
  EXPECT_EQ(0u, host::takeExceptions().size()) << "raised, and nobody looked";
  EXPECT_EQ(std::vector<std::string>(), host::stop());
  EXPECT_EQ(before_, standin::ledger());
}

host::Value stringOf(REALstring string) {
  if (!string) return host::Value::nullString();
  return host::Value::string(host::Ref::share(string));
}
