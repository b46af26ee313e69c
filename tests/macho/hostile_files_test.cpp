// Damaged dylibs: each is refused with a reason, or loads; none brings the process down.
#include <cstring>

#include "macho/format/format.h"
#include "tests/macho/toolbox.h"

namespace {

using toolbox::loadError;

const char kSource[] = R"(
#include <new>
extern "C" int abs(int); extern "C" int absent(int) __attribute__((weak_import));
struct Guard { ~Guard() { abs(1); } };
static int zero[100];
const char* const names[] = {"one", "two"};
int (*const functions[])(int) = {abs, nullptr};
EXPORT const char* entry(int i) {
  Guard guard;
  try { abs(i); } catch (std::bad_alloc&) { return nullptr; }
  if (absent) absent(functions[0](i));
  zero[i] += i;
  return names[i];
}
)";

class HostileFile : public toolbox::Workshop {
 protected:
  void SetUp() override {
    bytes_ = toolbox::readFile(
        build(kSource, {"_abs", "_absent", "__ZTISt9bad_alloc", "__ZSt9terminatev", "__Unwind_Resume",
                        "___cxa_begin_catch", "___cxa_end_catch", "___gxx_personality_v0"}));
    ASSERT_EQ("(loaded)", loadError(path("test.dylib")));
  }

  std::string tryToLoad(const std::string& bytes) const {
    const std::string file = write("damaged.dylib", bytes);
    const std::string error = loadError(file);
    EXPECT_TRUE(error == "(loaded)" || error.starts_with(file + ": ")) << error;
    return error;
  }

  // The file with a record changed, found by its load command.
  template <typename Record, typename Change>
  std::string changed(uint32_t kind, Change change) const {
    std::string bytes = bytes_;
    macho::Header header;
    std::memcpy(&header, bytes.data(), sizeof header);
    size_t offset = sizeof header;
    for (uint32_t i = 0; i < header.commandCount; ++i) {
      macho::Command command;
      std::memcpy(&command, &bytes[offset], sizeof command);
      if (command.kind == kind) {
        Record record;
        std::memcpy(&record, &bytes[offset], sizeof record);
        change(record);
        std::memcpy(&bytes[offset], &record, sizeof record);
        return bytes;
      }
      offset += command.size;
    }
    ADD_FAILURE() << "no load command " << kind;
    return bytes;
  }

  std::string withSegment(void (*change)(macho::SegmentCommand&)) const {
    return changed<macho::SegmentCommand>(macho::kSegment, change);
  }

  void expectRefused(const std::string& bytes, const std::string& reason) const {
    EXPECT_EQ(path("damaged.dylib") + ": " + reason + "; build or copy the file again", tryToLoad(bytes));
  }

  std::string bytes_;
};

TEST_F(HostileFile, CutShortAtAnyLength) {
  size_t refused = 0;
  for (size_t length = 0; length < bytes_.size(); length += 61) {
    refused += tryToLoad(bytes_.substr(0, length)) != "(loaded)";
  }
  // What ends the file (the string table) is not needed to load it; nearly all the rest is.
  EXPECT_LT(bytes_.size() / 61 - 30, refused);
}

TEST_F(HostileFile, WithAnyByteOfItsTablesChanged) {
  const auto sweep = [&](size_t begin, size_t end) {
    for (size_t i = begin; i < end; ++i) {
      for (const int value : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
        std::string bytes = bytes_;
        bytes[i] = static_cast<char>(value);
        tryToLoad(bytes);
      }
    }
  };
  macho::Header header;
  std::memcpy(&header, bytes_.data(), sizeof header);
  sweep(0, sizeof header + header.commandSize);
  // The frame table's first record is the one with "zPLR" in it; what dyld reads comes last.
  const size_t augmentation = bytes_.find("zPLR");
  ASSERT_NE(std::string::npos, augmentation);
  sweep(augmentation - 9, augmentation + 120);
  sweep(bytes_.rfind(std::string(16, '\0'), bytes_.find("_entry")) + 16, bytes_.size());
}

TEST_F(HostileFile, ThatSaysSomethingImpossible) {
  using macho::SegmentCommand;
  expectRefused(withSegment([](SegmentCommand& s) { s.address += 4; }),
                "malformed: a segment begins inside a page");
  expectRefused(withSegment([](SegmentCommand& s) { s.memorySize = s.fileSize - 1; }),
                "malformed: a segment has more bytes in the file than in memory");
  expectRefused(withSegment([](SegmentCommand& s) { s.protection = 7; }),
                "a segment is writable and executable at once");
  expectRefused(withSegment([](SegmentCommand& s) { s.memorySize += 0x1000; }),
                "malformed: segments overlap in memory");
  expectRefused(withSegment([](SegmentCommand& s) {
                  s.address = 0xF0000000;
                  s.sectionCount = 0;
                }),
                "malformed: it asks for 4026531840 bytes of memory");
  expectRefused(withSegment([](SegmentCommand& s) { s.address += 0x1000; }),
                "malformed: its section __text lies outside of its segment");
  const auto withoutInfo = changed<macho::DyldInfoCommand>(
      macho::kDyldInfoOnly, [](macho::DyldInfoCommand& info) { info.command.kind = macho::kUUID; });
  expectRefused(withoutInfo, "of a format older than macOS 10.6 reads first");
}

TEST_F(HostileFile, WhoseRebasesReachOutOfItsData) {
  macho::DyldInfoCommand info;
  changed<macho::DyldInfoCommand>(macho::kDyldInfoOnly, [&](macho::DyldInfoCommand& found) { info = found; });
  const auto withRebases = [&](std::vector<uint8_t> stream) {
    std::string bytes = bytes_;
    EXPECT_LE(stream.size(), info.rebaseSize);
    std::memcpy(&bytes[info.rebaseOffset], stream.data(), stream.size());
    return bytes;
  };
  expectRefused(withRebases({0x11, 0x20, 0x10, 0x51, 0x00}),
                "an address is to be set in __TEXT, which is not writable");
  expectRefused(withRebases({0x11, 0x21, 0x80, 0x80, 0x04, 0x51, 0x00}),
                "malformed: an address is to be set outside of its segment");
  expectRefused(withRebases({0x11, 0x29, 0x00, 0x51, 0x00}),
                "malformed: an address is to be set in a segment that is not there");
}

}  // namespace
