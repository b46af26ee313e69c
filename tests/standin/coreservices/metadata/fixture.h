// What tests of items and of queries share: a folder of their own, queries that look there, and a process as
// it was before: nothing alive, no failure planned.
#pragma once

#include <CoreServices/CoreServices.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "standin/coreservices/metadata/control.h"
#include "tests/support/owned.h"
#include "tests/support/scratch_folder.h"

inline MDItemRef itemOf(const void* object) {
  return static_cast<MDItemRef>(const_cast<void*>(object));
}

inline std::string pathOf(const void* item) {
  const Owned path(MDItemCopyAttribute(itemOf(item), kMDItemPath));
  return textOf(path.get());
}

class MetadataTest : public testing::Test {
 protected:
  using Names = std::initializer_list<const char*>;

  MetadataTest() { standin::setIndexedFolders({scratch.path()}); }
  ~MetadataTest() override {
    standin::clearFailures();
    standin::setIndexedFolders({"/"});
    EXPECT_EQ(alive(), "");
  }

  static Owned<MDQueryRef> makeQuery(const std::string& text, Names valueLists = {}, Names sorting = {}) {
    const auto lists = stringsOrNull(valueLists);
    const auto orders = stringsOrNull(sorting);
    return Owned(MDQueryCreate(kCFAllocatorDefault, makeString(text).get(), lists.get(), orders.get()));
  }
  static Owned<MDQueryRef> makeSubset(const Owned<MDQueryRef>& parent, const std::string& text) {
    return Owned(
        MDQueryCreateSubset(kCFAllocatorDefault, parent.get(), makeString(text).get(), nullptr, nullptr));
  }

  static MDItemRef resultAt(const Owned<MDQueryRef>& query, CFIndex index) {
    return itemOf(MDQueryGetResultAtIndex(query.get(), index));
  }
  // Their paths within the folder, in their order.
  std::vector<std::string> results(const Owned<MDQueryRef>& query) const {
    std::vector<std::string> paths;
    for (CFIndex i = 0; i < MDQueryGetResultCount(query.get()); ++i)
      paths.push_back(pathOf(resultAt(query, i)));
    return scratch.within(paths);
  }

  ScratchFolder scratch;

 private:
  static Owned<CFArrayRef> stringsOrNull(Names names) {
    return names.size() > 0 ? makeStrings(names) : Owned<CFArrayRef>();
  }
};
