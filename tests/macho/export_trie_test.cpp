// Export tries as another linker may write them, or as nobody should.
#include "macho/loader/export_trie.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

std::optional<macho::FoundExport> findWhole(const std::vector<uint8_t>& trie, const char* name) {
  return macho::findExport(macho::Bytes(trie.data(), trie.size()), name);
}

std::optional<uint32_t> find(const std::vector<uint8_t>& trie, const char* name) {
  const auto found = findWhole(trie, name);
  if (!found) return std::nullopt;
  EXPECT_EQ("", found->reexported);
  return found->address;
}

TEST(ExportTrie, FindsWhatItHolds) {
  // The root has one edge "_", whose node exports itself at 0x10 and has an edge "ab" to 0x90.
  const std::vector<uint8_t> trie = {0, 1, '_',  0,    5,                //
                                     2, 0, 0x10, 1,    'a', 'b', 0, 13,  //
                                     3, 0, 0x90, 0x01, 0};
  EXPECT_EQ(0x10u, find(trie, "_"));
  EXPECT_EQ(0x90u, find(trie, "_ab"));
  for (const char* absent : {"", "_a", "_abc", "x"}) EXPECT_EQ(std::nullopt, find(trie, absent)) << absent;
}

TEST(ExportTrie, TellsWhatReexportsAreCalledElsewhere) {
  EXPECT_EQ("a", findWhole({0, 1, 'a', 0, 5, 3, 0x08, 2, 0, 0}, "a")->reexported);
  EXPECT_EQ("_b", findWhole({0, 1, 'a', 0, 5, 5, 0x08, 2, '_', 'b', 0, 0}, "a")->reexported);
}

TEST(ExportTrie, GivesNoAddressForResolversAndAbsolutes) {
  for (const uint8_t flags : {0x10, 0x02}) {
    const std::vector<uint8_t> trie = {0, 1, 'a', 0, 5, 2, flags, 1, 0};
    EXPECT_EQ(std::nullopt, find(trie, "a")) << int{flags};
  }
}

TEST(ExportTrie, OfNothingHoldsNothing) {
  EXPECT_EQ(std::nullopt, find({}, "_a"));
  EXPECT_EQ(std::nullopt, find({0, 0}, "_a"));
}

TEST(ExportTrie, ThatIsMalformedIsRefused) {
  EXPECT_THROW(find({0}, "a"), macho::FormatError);
  EXPECT_THROW(find({0, 1, 0, 0}, "a"), macho::FormatError);              // a circle
  EXPECT_THROW(find({0, 1, 'a', 0, 99}, "a"), macho::FormatError);        // out of the stream
  EXPECT_THROW(find({0, 1, 'a'}, "a"), macho::FormatError);               // a label without an end
  EXPECT_THROW(find({0, 1, 'a', 0, 5, 9, 0}, "ab"), macho::FormatError);  // more terminal than stream
}

}  // namespace
