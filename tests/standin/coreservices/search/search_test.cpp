#include "standin/coreservices/search/search.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "standin/coreservices/language/parser.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/texts.h"

namespace standin::metadata {
namespace {

SearchReport search(const SearchRequest& request, ResultStore& results) {
  Search search(request, results);
  while (search.step()) {
  }
  return search.report();
}

class Searching : public testing::Test {
 protected:
  std::vector<std::string> find(std::u16string_view query) { return findIn({scratch.path()}, query); }

  std::vector<std::string> findIn(std::vector<std::string> folders, std::u16string_view query) {
    ResultStore results;
    SearchRequest request{std::get<ExpressionRef>(parseQuery(query)), std::move(folders), excluded, maximum};
    report = search(request, results);
    std::vector<std::string> paths;
    for (ResultStore::File file = 0; file < results.fileLimit(); ++file) {
      paths.push_back(results.path(file));
      EXPECT_EQ(results.find(paths.back()), file);
    }
    return scratch.within(paths);
  }

  ScratchFolder scratch;
  std::vector<std::string> excluded;
  size_t maximum = SIZE_MAX;
  SearchReport report;
};

TEST_F(Searching, FindsFilesAndFoldersByName) {
  scratch.file("Paris.txt");
  scratch.file("trips/paris in spring.txt");
  scratch.folder("paris");
  scratch.file("London.txt");
  EXPECT_EQ(find(u"kMDItemFSName == \"paris*\"c"),
            (Texts{"Paris.txt", "paris", "trips/paris in spring.txt"}));
  EXPECT_EQ(find(u"kMDItemDisplayName == \"London.txt\""), Texts{"London.txt"});
}

TEST_F(Searching, FindsBySizeWhichFoldersLack) {
  scratch.file("small", std::string(10, 'x'));
  scratch.file("large", std::string(5000, 'x'));
  scratch.folder("folder");
  EXPECT_EQ(find(u"kMDItemFSSize >= 0"), (Texts{"large", "small"}));
  EXPECT_EQ(find(u"kMDItemFSSize > 4999"), Texts{"large"});
  EXPECT_EQ(find(u"InRange(kMDItemFSSize, 10, 20)"), Texts{"small"});
  EXPECT_EQ(find(u"kMDItemFSSize != 10"), (Texts{"folder", "large"}));
}

TEST_F(Searching, FindsByEveryAttributeOfTheFileSystem) {
  scratch.file(".dot");
  scratch.file("box/one");
  scratch.file("box/two");
  EXPECT_EQ(find(u"kMDItemFSInvisible == true"), Texts{".dot"});
  EXPECT_EQ(find(u"kMDItemFSNodeCount == 2"), Texts{"box"});
  EXPECT_EQ(find(u"kMDItemPath == \"*/box/t*\""), Texts{"box/two"});
  EXPECT_EQ(find(u"kMDItemFSContentChangeDate < 0"), Texts{});
  EXPECT_EQ(find(u"kMDItemFSCreationDate > 0 && kMDItemFSExists == true").size(), 4u);
  EXPECT_EQ(find(u"kMDItemFSIsReadable == 1 && kMDItemFSIsWriteable == 1").size(), 4u);
  EXPECT_EQ(find(u"kMDItemContentModificationDate > 0 && kMDItemContentCreationDate > 0").size(), 4u);
  EXPECT_EQ(find(u"kMDItemFSOwnerUserID >= 0 && kMDItemFSOwnerGroupID >= 0").size(), 4u);
}

TEST_F(Searching, FindsByAnyAttributeButNotByThePath) {
  scratch.file("box/note");
  EXPECT_EQ(find(u"* == \"note\""), Texts{"box/note"});
  EXPECT_EQ(find(u"* == \"*/box/*\""), Texts{});
}

TEST_F(Searching, FindsNamesThatAreNoUtf8) {
  scratch.file("bad\xFFname.txt");
  EXPECT_EQ(find(u"kMDItemFSName == \"bad%FFname.txt\""), Texts{"bad\xFFname.txt"});
  EXPECT_EQ(find(u"kMDItemFSName == \"*.txt\""), Texts{"bad\xFFname.txt"});
}

TEST_F(Searching, StopsAtTheMaximum) {
  for (const char* name : {"a/1", "a/2", "b/3", "b/4"}) scratch.file(name);
  maximum = 3;
  EXPECT_EQ(find(u"kMDItemFSSize == 0"), (Texts{"a/1", "a/2", "b/3"}));
  maximum = 0;
  EXPECT_EQ(find(u"kMDItemFSSize == 0"), Texts{});
}

TEST_F(Searching, FindsOnceWhatLiesInTwoOfItsFolders) {
  scratch.file("outer/inner/file");
  scratch.link("alias", "outer");
  const std::vector<std::string> folders = {scratch.at("outer/inner"), scratch.at("outer"),
                                            scratch.at("alias"), scratch.at("outer")};
  EXPECT_EQ(findIn(folders, u"kMDItemFSName == \"file\""), Texts{"outer/inner/file"});
}

TEST_F(Searching, KeepsFoldersApartWhoseNamesStartAlike) {
  scratch.file("trip/file");
  scratch.file("trips/file");
  EXPECT_EQ(findIn({scratch.at("trip"), scratch.at("trips")}, u"kMDItemFSName == \"file\""),
            (Texts{"trip/file", "trips/file"}));
}

TEST_F(Searching, CountsFoldersThatAreMissing) {
  scratch.file("file");
  EXPECT_EQ(findIn({scratch.at("none"), scratch.path()}, u"kMDItemFSName == \"file\""), Texts{"file"});
  EXPECT_EQ(report.missingFolders, 1u);
  EXPECT_EQ(report.foldersSearched, 1u);
}

TEST_F(Searching, LeavesOutExcludedFoldersUnlessTheyAreAskedFor) {
  scratch.file("kept/file");
  scratch.file("out/file");
  excluded = {scratch.at("out"), scratch.at("none")};
  EXPECT_EQ(find(u"kMDItemFSName == \"file\""), Texts{"kept/file"});
  EXPECT_EQ(findIn({scratch.at("out")}, u"kMDItemFSName == \"file\""), Texts{"out/file"});
}

TEST_F(Searching, FindsInTheRootFolder) {
  ResultStore results;
  for (const auto& entry : std::filesystem::directory_iterator("/")) {
    if (entry.is_directory()) excluded.push_back(entry.path());
  }
  search({std::get<ExpressionRef>(parseQuery(u"kMDItemFSName == \"tmp\"")), {"/"}, excluded}, results);
  ASSERT_EQ(results.fileLimit(), 1u);
  EXPECT_EQ(results.path(0), "/tmp");
}

}  // namespace
}  // namespace standin::metadata
