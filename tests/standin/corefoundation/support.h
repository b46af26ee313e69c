// What the tests of this folder share.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include "tests/support/ledger.h"
#include "tests/support/owned.h"

// Ends every test with the ledger as it was at its start: nothing leaked, nothing given away.
class LedgerTest : public testing::Test {
 protected:
  void SetUp() override { before_ = standin::ledger(); }
  void TearDown() override {
    standin::clearFailures();
    EXPECT_EQ(standin::ledger(), before_);
  }

 private:
  LedgerLines before_;
};

inline Owned<CFNumberRef> makeInt(int value) {
  return Owned(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &value));
}

inline Owned<CFNumberRef> makeDouble(double value) {
  return Owned(CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &value));
}
