// The opcodes of rebases and binds, other linkers' included.
#include "macho/loader/fixups.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace {

using macho::Bind;
using macho::Bytes;
using macho::FixupPlace;

// Nothing for a pointer.
std::string kindName(FixupPlace place) {
  if (place.kind == macho::FixupKind::kTextAbsolute) return "text ";
  return place.kind == macho::FixupKind::kTextRelative ? "call " : "";
}

std::string rebases(const std::vector<uint8_t>& stream, uint32_t limit = 100) {
  std::string seen;
  try {
    macho::readRebases(Bytes(stream.data(), stream.size()), limit, [&](FixupPlace place) {
      seen += kindName(place) + std::to_string(place.segment) + ":" + std::to_string(place.offset) + " ";
    });
  } catch (const macho::FormatError& error) {
    seen += error.what();
  }
  return seen;
}

std::string binds(const std::vector<uint8_t>& stream, macho::BindStream kind, uint32_t limit = 100) {
  std::string seen;
  try {
    macho::readBinds(Bytes(stream.data(), stream.size()), kind, limit, [&](const Bind& bind) {
      seen += bind.symbol + (bind.weak ? "?" : "") + "@" + std::to_string(bind.library) + "+" +
              std::to_string(bind.addend) + "=" + kindName(bind.place) + std::to_string(bind.place.segment) +
              ":" + std::to_string(bind.place.offset) + " ";
    });
  } catch (const macho::FormatError& error) {
    seen += error.what();
  }
  return seen;
}

constexpr auto kOrdinary = macho::BindStream::kOrdinary;
constexpr auto kLazy = macho::BindStream::kLazy;

TEST(Rebases, StepFromWordToWord) {
  EXPECT_EQ("1:0 1:4 1:8 ", rebases({0x11, 0x21, 0x00, 0x53, 0x00}));
  EXPECT_EQ("2:256 2:260 ", rebases({0x11, 0x22, 0x80, 0x02, 0x60, 0x02, 0x00}));
}

TEST(Rebases, AddToTheAddress) {
  EXPECT_EQ("1:16 1:32 ", rebases({0x11, 0x21, 0x00, 0x30, 0x10, 0x51, 0x43, 0x51, 0x00}));
  EXPECT_EQ("1:0 1:12 1:16 ", rebases({0x11, 0x21, 0x00, 0x70, 0x08, 0x52, 0x00}));
  EXPECT_EQ("1:0 1:12 1:24 ", rebases({0x11, 0x21, 0x00, 0x80, 0x03, 0x08, 0x00}));
}

TEST(Rebases, StepBackwardsByAWrappingAddition) {
  EXPECT_EQ("1:16 1:4 ", rebases({0x11, 0x21, 0x10, 0x51, 0x30, 0xF0, 0xFF, 0xFF, 0xFF, 0x0F, 0x51, 0x00}));
}

TEST(Rebases, InTextAreToldFromThoseOfPointers) {
  EXPECT_EQ("1:0 text 0:16 text 0:20 1:4 ",
            rebases({0x11, 0x21, 0x00, 0x51, 0x12, 0x20, 0x10, 0x52, 0x11, 0x21, 0x04, 0x51, 0x00}));
}

TEST(Rebases, EndAtTheEndOfTheStreamToo) {
  EXPECT_EQ("1:0 ", rebases({0x11, 0x21, 0x00, 0x51}));
  EXPECT_EQ("", rebases({}));
  EXPECT_EQ("1:0 ", rebases({0x11, 0x21, 0x00, 0x51, 0x00, 0x00, 0x00, 0x00}));
}

TEST(Rebases, ThatAreCutAreRefused) {
  EXPECT_EQ("malformed: its rebases begin in the middle", rebases({0x21, 0x00, 0x51, 0x00}));
  EXPECT_EQ("malformed: its rebases begin in the middle", rebases({0x11, 0x51, 0x00}));
  EXPECT_EQ("1:0 malformed: its rebases go on after their end",
            rebases({0x11, 0x21, 0x00, 0x51, 0x00, 0x00, 0x51}));
}

TEST(Rebases, ThatAreMalformedAreRefused) {
  EXPECT_EQ("malformed: unknown opcode 144 among its rebases", rebases({0x91}));
  EXPECT_EQ("malformed: unknown type 0 among its rebases", rebases({0x10}));
  EXPECT_EQ("malformed: unknown type 3 among its rebases", rebases({0x13}));
  EXPECT_EQ("truncated: 1 bytes are wanted at offset 3 of 3", rebases({0x11, 0x21, 0x80}));
  EXPECT_EQ("malformed: more rebases than the image has room for",
            rebases({0x11, 0x21, 0x00, 0x60, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F}));
  EXPECT_EQ("1:0 1:0 malformed: more rebases than the image has room for",
            rebases({0x11, 0x21, 0x00, 0x80, 0x02, 0xFC, 0xFF, 0xFF, 0xFF, 0x0F, 0x51}, 2));
}

TEST(Binds, CarrySymbolLibraryAddendAndWeakness) {
  EXPECT_EQ("_a@1+0=1:8 _b?@300+-2=1:12 ",
            binds({0x51, 0x11, 0x40, '_',  'a', 0,   0x71, 0x08, 0x90,  //
                   0x20, 0xAC, 0x02, 0x41, '_', 'b', 0,    0x60, 0x7E, 0x90, 0x00},
                  kOrdinary));
}

TEST(Binds, InTextAreToldFromThoseOfPointers) {
  EXPECT_EQ("_a@1+0=text 0:8 _a@1+0=call 0:16 _a@1+0=1:0 ",
            binds({0x11, 0x40, '_', 'a', 0, 0x52, 0x70, 0x08, 0x90, 0x53, 0x70, 0x10, 0x90, 0x51, 0x71, 0x00,
                   0x90, 0x00},
                  kOrdinary));
}

TEST(Binds, KnowTheSpecialLibraries) {
  EXPECT_EQ(
      "_a@0+0=1:0 _a@-1+0=1:4 _a@-2+0=1:8 ",
      binds({0x51, 0x40, '_', 'a', 0, 0x71, 0x00, 0x30, 0x90, 0x3F, 0x90, 0x3E, 0x90, 0x00}, kOrdinary));
}

TEST(Binds, AddToTheAddress) {
  EXPECT_EQ("_a@1+0=1:0 _a@1+0=1:20 _a@1+0=1:32 ",
            binds({0x51, 0x11, 0x40, '_', 'a', 0, 0x71, 0x00, 0xA0, 0x10, 0xB2, 0x90, 0x00}, kOrdinary));
  EXPECT_EQ("_a@1+0=1:0 _a@1+0=1:8 _a@1+0=1:28 ",
            binds({0x51, 0x11, 0x40, '_', 'a', 0, 0x71, 0x00, 0xC0, 0x02, 0x04, 0x80, 0x0C, 0x90, 0x00},
                  kOrdinary));
}

TEST(Binds, OfTheLazyStreamAreSeparatedByEnds) {
  const std::vector<uint8_t> stream = {0x71, 0x00, 0x11, 0x40, '_', 'a', 0,    0x90, 0x00, 0x71,
                                       0x04, 0x12, 0x40, '_',  'b', 0,   0x90, 0x00, 0x00};
  EXPECT_EQ("_a@1+0=1:0 _b@2+0=1:4 ", binds(stream, kLazy));
}

TEST(Binds, ThatAreCutAreRefused) {
  const char kMiddle[] = "malformed: its binds begin in the middle";
  EXPECT_EQ(kMiddle, binds({0x40, '_', 'a', 0, 0x71, 0x00, 0x90, 0x00}, kOrdinary));
  EXPECT_EQ(kMiddle, binds({0x51, 0x71, 0x00, 0x90, 0x00}, kOrdinary));
  EXPECT_EQ(kMiddle, binds({0x51, 0x40, '_', 'a', 0, 0x90, 0x00}, kOrdinary));
  EXPECT_EQ("_a@0+0=1:0 " + std::string(kMiddle),
            binds({0x71, 0x00, 0x40, '_', 'a', 0, 0x90, 0x00, 0x40, '_', 'b', 0, 0x90, 0x00}, kLazy));
  EXPECT_EQ("_a@0+0=1:0 malformed: its binds go on after their end",
            binds({0x51, 0x40, '_', 'a', 0, 0x71, 0x00, 0x90, 0x00, 0x90}, kOrdinary));
}

TEST(Binds, ThatAreMalformedAreRefused) {
  EXPECT_EQ("malformed: unknown opcode 240 among its binds", binds({0xF0}, kOrdinary));
  EXPECT_EQ("malformed: unknown type 4 among its binds", binds({0x54}, kOrdinary));
  EXPECT_EQ("truncated: a name at offset 1 has no end", binds({0x40, '_', 'a'}, kOrdinary));
  EXPECT_EQ("malformed: more binds than the image has room for",
            binds({0x51, 0x40, '_', 'a', 0, 0x71, 0x00, 0xC0, 0xFF, 0xFF, 0x03, 0x00}, kOrdinary));
  EXPECT_EQ("malformed: a number at offset 11 does not end",
            binds({0x60, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80}, kOrdinary));
}

}  // namespace
