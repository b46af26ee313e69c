#include <cstring>

#include "tests/standin/host/fake_plugin.h"

namespace fake {
namespace {

void* pointer(Object block) {
  return entry<void*(Object)>("memoryBlockGetPtr")(block);
}

int32_t size(Object block) {
  return entry<int32_t(Object)>("memoryBlockGetSize")(block);
}

using MemoryBlocks = HostTest;

TEST_F(MemoryBlocks, TellWhereTheirBytesAreAndHowMany) {
  const auto block = host::memoryBlock(std::string_view("a\0b", 3));
  ASSERT_EQ(size(block.handle()), 3);
  EXPECT_EQ(std::memcmp(pointer(block.handle()), "a\0b", 3), 0);
  EXPECT_TRUE(host::isA(block, "MemoryBlock"));
}

TEST_F(MemoryBlocks, EmptyOnesHaveAnAddressToo) {
  const auto block = host::memoryBlock("");
  EXPECT_EQ(size(block.handle()), 0);
  EXPECT_NE(pointer(block.handle()), nullptr);
}

TEST_F(MemoryBlocks, MayAnswerOddly) {
  const auto block = host::memoryBlock("abc");
  host::settings().nullMemoryBlockPointers = true;
  host::settings().memoryBlockSize = -1;
  EXPECT_EQ(pointer(block.handle()), nullptr);
  EXPECT_EQ(size(block.handle()), -1);
}

TEST_F(MemoryBlocks, APlannedFailureGivesTheNeutralValue) {
  const auto block = host::memoryBlock("abc");
  standin::failCall("memoryBlockGetPtr", 1);
  EXPECT_EQ(pointer(block.handle()), nullptr);
  standin::failCall("memoryBlockGetSize", 1);
  EXPECT_EQ(size(block.handle()), 0);
  standin::clearFailures();
}

TEST_F(MemoryBlocks, AnythingElseEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "fast");
  const auto date = host::newInstance("Date");
  const host::Value text("x");
  EXPECT_DEATH(pointer(date.handle()), "memoryBlockGetPtr: the object Date was passed where a MemoryBlock");
  EXPECT_DEATH(size(date.handle()), "memoryBlockGetSize: the object Date was passed where a MemoryBlock");
  EXPECT_DEATH(size(text.handle()), "memoryBlockGetSize: a string was passed where an object");
  const Object gone = newInstance("MemoryBlock");
  unlockObject(gone);
  EXPECT_DEATH(pointer(gone), "memoryBlockGetPtr: use of a freed handle");
}

}  // namespace
}  // namespace fake
