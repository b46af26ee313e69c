// What the tests of this folder share.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <string>

#include "standin/gate/gate.h"

// Ends every test with the ledger as it was at its start: nothing leaked, nothing given away.
class LedgerTest : public testing::Test {
 protected:
  void SetUp() override { before_ = lines(); }
  void TearDown() override {
    standin::clearFailures();
    EXPECT_EQ(lines(), before_);
  }

 private:
  static std::string lines() {
    std::string text;
    for (const standin::LedgerLine& line : standin::ledger()) {
      text += line.kind + " " + std::to_string(line.count) + "\n";
    }
    return text;
  }
  std::string before_;
};

// A reference that the test owns.
template <class T>
class Ref {
 public:
  explicit Ref(T ref) : ref_(ref) {}
  ~Ref() {
    if (ref_) CFRelease(ref_);
  }
  Ref(const Ref&) = delete;
  Ref& operator=(const Ref&) = delete;
  operator T() const { return ref_; }
  T get() const { return ref_; }

 private:
  T ref_;
};

inline CFStringRef makeString(const char* utf8) {
  return CFStringCreateWithCString(kCFAllocatorDefault, utf8, kCFStringEncodingUTF8);
}

inline CFNumberRef makeInt(int value) {
  return CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &value);
}

inline CFNumberRef makeDouble(double value) {
  return CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &value);
}

inline std::string utf8(CFStringRef string) {
  if (string == nullptr) return "(null)";
  std::string bytes(static_cast<size_t>(CFStringGetLength(string)) * 3 + 1, '\0');
  if (!CFStringGetCString(string, bytes.data(), static_cast<CFIndex>(bytes.size()), kCFStringEncodingUTF8)) {
    return "(not UTF-8)";
  }
  return bytes.c_str();
}
