// Damaged dylibs: each is refused with a reason, or loads; none brings the process down.
#include <cstring>
#include <string>
#include <utility>

#include "macho/format/format.h"
#include "tests/macho/toolbox.h"
#include "tests/support/sanitizers.h"
#include "tests/support/tier.h"

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

  std::string tryToLoad(std::string_view bytes) const { return toolbox::loadContentsError(bytes, options_); }

  size_t headerEnd() const {
    macho::Header header;
    std::memcpy(&header, bytes_.data(), sizeof header);
    return sizeof header + header.commandSize;
  }

  // The byte at this offset in several ways; what is refused has a reason.
  void tryDamages(size_t offset) {
    const char right = bytes_[offset];
    for (const int value : {0x00, 0x80, 0xFF, right ^ 0x01, right ^ 0xFF}) {
      bytes_[offset] = static_cast<char>(value);
      tryToLoad(bytes_);
    }
    bytes_[offset] = right;
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
    EXPECT_EQ("damaged.dylib: " + reason + "; build or copy the file again", tryToLoad(bytes));
  }

  std::string bytes_;
  macho::LoadOptions options_;
};

TEST_F(HostileFile, CutShortAtAnyLength) {
  for (size_t length = 0; length < bytes_.size(); ++length) {
    ASSERT_NE("(loaded)", tryToLoad(std::string_view(bytes_).substr(0, length))) << length;
  }
}

TEST_F(HostileFile, WithAnyByteOfItsTablesChanged) {
  const auto sweep = [&](size_t begin, size_t end) {
    for (size_t i = begin; i < end; ++i) tryDamages(i);
  };
  sweep(0, headerEnd());
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
  expectRefused(withSegment([](SegmentCommand& s) { s.address += 0x1000; }),
                "malformed: its section __text lies outside of its segment");
  expectRefused(withSegment([](SegmentCommand& s) { s.protection = macho::kRead; }),
                "malformed: its section __text can't be run");
  expectRefused(withSegment([](SegmentCommand& s) { s.protection |= 8; }),
                "malformed: a segment's protection is none");
  expectRefused(withSegment([](SegmentCommand& s) { s.maximumProtection = macho::kRead; }),
                "malformed: a segment's protection is none");
  expectRefused(withSegment([](SegmentCommand& s) {
                  s.sectionCount = 0;
                  s.fileOffset += 0x1000;
                }),
                "malformed: segments overlap in the file");
  expectRefused(withSegment([](SegmentCommand& s) { s.fileSize = s.sectionCount = 0; }),
                "malformed: its first segment doesn't begin with the file's header");
  expectRefused(withSegment([](SegmentCommand& s) { s.command.kind = 0x7F | macho::kMustUnderstand; }),
                "it has a load command that this loader does not know: 127");
  expectRefused(withSegment([](SegmentCommand& s) { s.command.kind = macho::kInitRoutine; }),
                "it has a routine to run first, which this loader does not");
}

TEST_F(HostileFile, WhoseSectionsCantBeThere) {
  struct TextSegment {
    macho::SegmentCommand segment;
    macho::SectionRecord first;
  };
  const auto withSection = [&](void (*change)(macho::SectionRecord&)) {
    return changed<TextSegment>(macho::kSegment, [&](TextSegment& text) { change(text.first); });
  };
  using macho::SectionRecord;
  expectRefused(withSection([](SectionRecord& s) { s.address += 16; }),
                "malformed: its section __text lies elsewhere in the file than in memory");
  expectRefused(withSection([](SectionRecord& s) { s.size = 0xFFFFFFFF; }),
                "malformed: its section __text lies outside of its segment");
}

TEST_F(HostileFile, WhoseTablesForTheLoaderCantBeThere) {
  using macho::DyldInfoCommand;
  const auto withInfo = [&](void (*change)(DyldInfoCommand&)) {
    return changed<DyldInfoCommand>(macho::kDyldInfoOnly, change);
  };
  const char kElsewhere[] = "malformed: its tables for the loader overlap, or lie outside of __LINKEDIT";
  expectRefused(withInfo([](DyldInfoCommand& info) { info.rebaseOffset = 0; }), kElsewhere);
  expectRefused(withInfo([](DyldInfoCommand& info) { info.bindOffset = info.rebaseOffset; }), kElsewhere);
  expectRefused(withInfo([](DyldInfoCommand& info) { info.exportSize = 0x7FFFFFFF; }), kElsewhere);
  expectRefused(withInfo([](DyldInfoCommand& info) { info.bindSize = 3; }),
                "malformed: there is more in its tables for the loader than it says");
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

// The same word over and over: where memory was large, a small file took seconds.
TEST_F(HostileFile, WhoseRebasesAreMoreThanItsBytes) {
  macho::DyldInfoCommand info;
  std::string bytes =
      changed<macho::DyldInfoCommand>(macho::kDyldInfoOnly, [&](macho::DyldInfoCommand& found) {
        found.rebaseSize += std::exchange(found.bindSize, 0);
        info = found;
      });
  // 12,000 times the first word of __DATA, each time a word back.
  std::string stream("\x11\x21\x00\x80\xE0\x5D\xFC\xFF\xFF\xFF\x0F", 11);
  ASSERT_LE(stream.size(), info.rebaseSize);
  ASSERT_GT(12000U, bytes.size());
  stream.resize(info.rebaseSize);
  bytes.replace(info.rebaseOffset, info.rebaseSize, stream);
  expectRefused(bytes, "malformed: more rebases than the image has room for");
}

// Found by fuzz/macho_images: the unwinder took functions of other libraries for this one.
TEST_F(HostileFile, WhoseFunctionEndsOutsideOfIt) {
  const size_t common = bytes_.find("zPLR") - 9;
  uint32_t size;
  std::memcpy(&size, &bytes_[common], sizeof size);
  const size_t function = common + sizeof size + size;
  for (const uint32_t length : {8u << 20, 0xFFFFFFFFu}) {
    constexpr size_t kLengthField = 12;
    std::string bytes = bytes_;
    std::memcpy(&bytes[function + kLengthField], &length, sizeof length);
    expectRefused(bytes, "malformed: its __eh_frame has a function that ends outside of it");
  }
}

// The plug-in as a Mac's linker writes it. All that it imports is taken to be here: it isn't run.
class OtherLinkersFile : public HostileFile {
 protected:
  void SetUp() override {
    bytes_ = toolbox::readFile(OTHER_LINKERS_DYLIB);
    options_.lookup = [](const std::string&) { return reinterpret_cast<void*>(&std::memcpy); };
    ASSERT_EQ("(loaded)", tryToLoad(bytes_));
  }

  // Sanitizers take ten times as long.
  const size_t kStep = underAddressSanitizer() && !isLongTier() ? 10 : 1;
};

TEST_F(OtherLinkersFile, CutShort) {
  const auto tryLength = [&](size_t length) {
    ASSERT_NE("(loaded)", tryToLoad(std::string_view(bytes_).substr(0, length))) << length;
  };
  for (size_t length = 0; length < headerEnd(); length += kStep) tryLength(length);
  for (size_t length = headerEnd(); length < bytes_.size(); length += 37 * kStep) tryLength(length);
}

TEST_F(OtherLinkersFile, WithAnyByteOfItsHeaderChanged) {
  for (size_t i = 0; i < headerEnd(); i += kStep) tryDamages(i);
}

TEST_F(OtherLinkersFile, WhoseStubsAreNotBound) {
  macho::DyldInfoCommand info;
  changed<macho::DyldInfoCommand>(macho::kDyldInfoOnly, [&](macho::DyldInfoCommand& found) { info = found; });
  bytes_.replace(info.lazyBindOffset, info.lazyBindSize, info.lazyBindSize, '\0');
  expectRefused(bytes_, "malformed: it doesn't say what one of its stubs is to be bound to");
}

TEST_F(OtherLinkersFile, WhoseFramesAreMissing) {
  bytes_[bytes_.find("__eh_frame")] = 'x';
  expectRefused(bytes_, "malformed: its functions catch exceptions, but it has no __eh_frame");
}

TEST_F(OtherLinkersFile, ThatNamesFewerLibrariesThanItUses) {
  const auto oneLess = changed<macho::DylibCommand>(
      macho::kLoadDylib, [](macho::DylibCommand& library) { library.command.kind = macho::kUUID; });
  expectRefused(oneLess, "malformed: it takes __Unwind_Resume of a library that it doesn't name");
}

}  // namespace
