#include "standin/coreservices/search/result_store.h"
#include "tests/support/texts.h"

#include <gtest/gtest.h>

namespace standin::metadata {
namespace {

constexpr auto kNoFile = ResultStore::kNoFile;

TEST(StoredResults, AreNotFoundByPathsThatAreNotAmongThem) {
  ResultStore results;
  const auto root = results.addFolder(ResultStore::kNoFolder, "/");
  const auto sub = results.addFolder(root, "sub");
  const auto first = results.add(root, "a");
  const auto second = results.add(sub, "a");
  EXPECT_EQ(results.path(first), "/a");
  EXPECT_EQ(results.path(second), "/sub/a");
  EXPECT_EQ(results.find("/sub/a"), second);
  EXPECT_EQ(results.find("/sub"), kNoFile);
  EXPECT_EQ(results.find("a"), kNoFile);
  const auto third = results.add(sub, "b");
  EXPECT_EQ(results.find("/sub/b"), third);
}

TEST(StoredResults, AreAddedByTheirPathsToKnownAndToNewFolders) {
  ResultStore results;
  const auto root = results.addFolder(ResultStore::kNoFolder, "/top");
  results.add(results.addFolder(root, "sub"), "a");
  for (const char* path : {"/top/b", "/top/sub/c", "/elsewhere/d", "/e", "/elsewhere/f"}) {
    const auto file = results.add(path);
    EXPECT_EQ(results.path(file), path);
    EXPECT_EQ(results.find(path), file);
  }
  EXPECT_EQ(results.find("/top/sub/a"), 0u);
}

TEST(StoredResults, AreForgottenAndTheirNumbersUsedAgain) {
  ResultStore results;
  const auto root = results.addFolder(ResultStore::kNoFolder, "/top");
  const auto a = results.add(root, "a");
  const auto b = results.add(root, "b");
  EXPECT_EQ(results.find("/top/a"), a);
  results.remove(a);
  EXPECT_EQ(results.find("/top/a"), kNoFile);
  EXPECT_EQ(results.find("/top/b"), b);
  EXPECT_EQ(results.add("/top/c"), a);
  EXPECT_EQ(results.find("/top/c"), a);
  EXPECT_EQ(results.fileLimit(), 2u);
}

TEST(StoredResults, AreListedByAFolderAboveThem) {
  ResultStore results;
  const auto root = results.addFolder(ResultStore::kNoFolder, "/top");
  const auto sub = results.addFolder(root, "sub");
  results.add(results.addFolder(sub, "deep"), "a");
  results.add(sub, "b");
  results.add(results.addFolder(root, "subway"), "c");
  results.remove(results.add(sub, "removed"));
  EXPECT_EQ(sorted(results.pathsBelow("/top/sub")), sorted({"/top/sub/deep/a", "/top/sub/b"}));
  EXPECT_EQ(results.pathsBelow("/top/su"), Texts{});
  EXPECT_EQ(results.pathsBelow("/").size(), 3u);
  EXPECT_EQ(results.pathsBelow("/top").size(), 3u);
}

// Names of removed files and of folders that are no longer needed would pile up otherwise.
// Names stand in pieces of 64 KB.
TEST(StoredResults, HaveNamesOfAnyLength) {
  ResultStore results;
  std::vector<std::string> paths;
  for (const size_t length : {1, 65'000, 535, 65'535, 65'536, 3, 200'000, 65'534, 255, 65'300}) {
    paths.push_back('/' + std::string(length - 1, 'a') + static_cast<char>('a' + paths.size()));
    results.add(paths.back());
  }
  for (size_t i = 0; i < paths.size(); ++i) {
    EXPECT_TRUE(results.path(static_cast<ResultStore::File>(i)) == paths[i]) << i;
    EXPECT_EQ(results.find(paths[i]), i);
  }
}

TEST(StoredResults, KeepTheirPathsWhenWhatWasRemovedIsGivenBack) {
  ResultStore results;
  const std::string stays = "/top/folder/stays";
  const auto early = results.add("/gone/before");
  const auto file = results.add(stays);
  results.remove(early);
  for (int i = 0; i < 5000; ++i) {
    results.remove(results.add("/top/folder-" + std::to_string(i) + "/a rather long name"));
    if (i % 1000 == 0) results.compact();
  }
  results.compact();
  EXPECT_EQ(results.path(file), stays);
  EXPECT_EQ(results.find(stays), file);
  const auto added = results.add("/top/folder/new");
  EXPECT_EQ(results.path(added), "/top/folder/new");
  EXPECT_EQ(results.find("/top/folder/new"), added);
  EXPECT_LE(results.fileLimit(), 2u);
}

}  // namespace
}  // namespace standin::metadata
