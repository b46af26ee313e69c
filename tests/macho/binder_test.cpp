#include "macho/loader/binder.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// A name that a small file asks for thousands of times took seconds: fuzz/macho_images has that as a seed.
TEST(Binder, LooksForANameOfTheImageOnce) {
  // The root has one child, whose name is "a" and whose address 4.
  std::vector<uint8_t> trie = {0, 1, 'a', 0, 5, 2, 0, 4, 0};
  const std::vector<uint8_t> image(8);
  macho::DylibFile dylib;
  dylib.memory = {0, 8};
  dylib.exports = macho::Bytes(trie.data(), trie.size());
  const macho::LoadOptions options;
  macho::Binder binder(dylib, image.data(), options);
  const macho::Bind bind = {
      .place = {}, .symbol = "a", .addend = 0, .library = macho::kSelfOrdinal, .weak = true};
  ASSERT_EQ(binder.address(bind), image.data() + 4);
  trie.assign(trie.size(), 0);
  EXPECT_EQ(binder.address(bind), image.data() + 4);
}

}  // namespace
