// The linker's opcodes of rebases and binds, read back by the loader.
#include "macho/linker/fixup_opcodes.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "macho/loader/fixups.h"

namespace {

using macho::Bytes;

constexpr uint32_t kDataAddress = 0x12000;

// The addresses in ascending order, however the opcodes come to them.
std::vector<uint32_t> readBack(const std::vector<uint8_t>& opcodes) {
  std::vector<uint32_t> addresses;
  macho::readRebases(Bytes(opcodes.data(), opcodes.size()), 100000, [&](macho::FixupPlace place) {
    EXPECT_EQ(1u, place.segment);
    addresses.push_back(kDataAddress + place.offset);
  });
  std::sort(addresses.begin(), addresses.end());
  return addresses;
}

// How many bytes they take; fails when they don't say the same.
size_t encodedSize(const std::vector<uint32_t>& rebases) {
  const std::vector<uint8_t> opcodes = macho::encodeRebases(rebases, kDataAddress);
  EXPECT_EQ(rebases, readBack(opcodes));
  return opcodes.size();
}

// Rows of records at this distance, with a pointer at each of the offsets.
std::vector<uint32_t> table(uint32_t start, uint32_t rows, uint32_t distance,
                            const std::vector<uint32_t>& offsets) {
  std::vector<uint32_t> rebases;
  for (uint32_t row = 0; row < rows; ++row) {
    for (const uint32_t offset : offsets) rebases.push_back(kDataAddress + start + row * distance + offset);
  }
  return rebases;
}

TEST(RebaseOpcodes, OfNothingAreNothing) {
  EXPECT_EQ(0u, encodedSize({}));
}

TEST(RebaseOpcodes, TakeAFewBytesForARegularTable) {
  const size_t frame = 1 + 3 + 1;  // type, place, end
  EXPECT_EQ(frame + 1, encodedSize(table(0x80, 1, 0, {0})));
  EXPECT_EQ(frame + 1, encodedSize(table(0x80, 15, 4, {0})));
  EXPECT_EQ(frame + 3, encodedSize(table(0x80, 1000, 4, {0})));
  // All but the last one, and the last one.
  EXPECT_EQ(frame + 4 + 1, encodedSize(table(0x80, 1000, 20, {0})));
  // For each column its count and distance, and the way to the second.
  EXPECT_EQ(frame + 4 + 3 + 4, encodedSize(table(0x80, 1000, 24, {0, 8})));
}

TEST(RebaseOpcodes, GoFromOneTableToTheNext) {
  std::vector<uint32_t> rebases;
  uint32_t start = 0;
  for (const auto& offsets : std::vector<std::vector<uint32_t>>{{0, 8}, {0}, {0, 4, 12}, {4, 20}, {0, 8}}) {
    const auto part = table(start, 7, 24, offsets);
    rebases.insert(rebases.end(), part.begin(), part.end());
    start += 7 * 24 + 4 * (start % 3);
  }
  EXPECT_GT(60u, encodedSize(rebases));
}

TEST(RebaseOpcodes, SayTheSameForAnyAddresses) {
  std::mt19937 random(1);
  for (int round = 0; round < 300; ++round) {
    std::vector<uint32_t> rebases;
    uint32_t address = kDataAddress + random() % 64 * 4;
    const uint32_t variety = 1 + random() % 5;
    for (uint32_t count = 1 + random() % 80; count; --count) {
      rebases.push_back(address);
      address += 4 * (1 + random() % variety);
      if (random() % 20 == 0) address += random() % 10000;  // not always a whole word
    }
    EXPECT_GE(1 + 3 + 1 + 4 * rebases.size(), encodedSize(rebases));
  }
}

TEST(BindOpcodes, NameEachLibraryAndSymbolOnce) {
  const std::vector<macho::Import> imports = {
      {"_alpha", 1, false}, {"_beta", 0, true}, {"_gamma", 20, false}};
  std::vector<macho::LoadTimeWork::Bind> binds;
  for (uint32_t i = 0; i < 12; ++i) binds.push_back({kDataAddress + 8 * i, i % 3, 0});
  binds.push_back({kDataAddress + 4, 1, -7});
  binds.push_back({kDataAddress + 20, 0, 7});
  const std::vector<uint8_t> opcodes = macho::encodeBinds(binds, imports, kDataAddress);

  const std::string text(opcodes.begin(), opcodes.end());
  std::map<uint32_t, std::string> seen;
  macho::readBinds(
      Bytes(opcodes.data(), opcodes.size()), macho::BindStream::kOrdinary, 100, [&](const macho::Bind& bind) {
        EXPECT_EQ(1u, bind.place.segment);
        EXPECT_EQ("", seen[bind.place.offset]);
        seen[bind.place.offset] = bind.symbol + (bind.weak ? "? " : " ") + std::to_string(bind.library) +
                                  " " + std::to_string(bind.addend);
      });
  const std::map<uint32_t, std::string> expected = {
      {0, "_alpha 2 0"},   {8, "_beta? 1 0"},   {16, "_gamma 21 0"}, {24, "_alpha 2 0"},  {32, "_beta? 1 0"},
      {40, "_gamma 21 0"}, {48, "_alpha 2 0"},  {56, "_beta? 1 0"},  {64, "_gamma 21 0"}, {72, "_alpha 2 0"},
      {80, "_beta? 1 0"},  {88, "_gamma 21 0"}, {4, "_beta? 1 -7"},  {20, "_alpha 2 7"}};
  EXPECT_EQ(expected, seen);
  for (const macho::Import& import : imports) {
    const size_t first = text.find(import.name);
    EXPECT_NE(std::string::npos, first);
    EXPECT_EQ(std::string::npos, text.find(import.name, first + 1));
  }
}

TEST(BindOpcodes, OfWordsSideBySideNeedNoPlaces) {
  std::vector<macho::Import> imports;
  std::vector<macho::LoadTimeWork::Bind> binds;
  for (uint32_t i = 0; i < 10; ++i) {
    imports.push_back({"_name" + std::to_string(i), 0, false});
    binds.push_back({kDataAddress + 4 * i, i, 0});
  }
  // Type, library, place, end; for each one its symbol with the terminating zero, and the bind.
  EXPECT_EQ(1 + 1 + 2 + 1 + 10 * (1 + 7 + 1), macho::encodeBinds(binds, imports, kDataAddress).size());
}

}  // namespace
