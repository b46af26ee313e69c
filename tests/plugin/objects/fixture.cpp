#include "tests/plugin/objects/fixture.h"

#include <set>

#include "host/startup.h"

bool outOfMemory = false;
std::vector<size_t> blocks;

// What is freed before and after the tests is looked for here, too.
static std::set<void*>& keptBlocks() {
  static auto& kept = *new std::set<void*>;
  return kept;
}

size_t blocksKept() {
  return keptBlocks().size();
}

// This program is linked with --wrap for these two.
extern "C" void* __real_calloc(size_t count, size_t size);
extern "C" void* __wrap_calloc(size_t count, size_t size) {
  blocks.push_back(count * size);
  void* const block = outOfMemory ? nullptr : __real_calloc(count, size);
  if (block) keptBlocks().insert(block);
  return block;
}

extern "C" void __real_free(void* block);
extern "C" void __wrap_free(void* block) {
  keptBlocks().erase(block);
  __real_free(block);
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
