// A folder for the time of a test, and short ways to ask the catalogue.
#pragma once

#include <CoreServices/CoreServices.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/support/owned.h"
#include "tests/support/scratch_folder.h"

class FileManagerTest : public testing::Test {
 protected:
  ~FileManagerTest() override {
    standin::clearFailures();
    EXPECT_EQ(alive(), "");
  }

  std::string path(const std::string& name) const { return scratch.at(name); }
  std::string folder() const { return scratch.path(); }
  void add(const std::string& name) const { scratch.file(name, "content"); }

  // False when no file is there.
  static bool refOf(const std::string& path, FSRef& ref) { return CFURLGetFSRef(makeURL(path).get(), &ref); }
  static FSRef mustRef(const std::string& path) {
    FSRef ref{};
    EXPECT_TRUE(refOf(path, ref)) << path;
    return ref;
  }
  static std::string pathOf(const FSRef& ref) {
    const Owned url(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref));
    UInt8 bytes[4096] = "";
    if (!url || !CFURLGetFileSystemRepresentation(url.get(), true, bytes, sizeof bytes)) return "(none)";
    return reinterpret_cast<const char*>(bytes);
  }
  static std::string textOf(const HFSUniStr255& name) {
    return ::textOf(Owned(CFStringCreateWithCharacters(nullptr, name.unicode, name.length)).get());
  }
  static bool same(const FSRef& a, const FSRef& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

  const ScratchFolder scratch;
};
