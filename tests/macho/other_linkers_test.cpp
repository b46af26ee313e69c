// What other linkers write and ours doesn't: addresses in instructions, whose operands are set before the
// text's pages become unwritable, and exports of what other libraries have. Dylibs of ours are patched to
// have them.
#include <cstring>

#include "macho/format/format.h"
#include "tests/macho/toolbox.h"

namespace {

using toolbox::function;
using toolbox::loadError;

int twice(int value) {
  return 2 * value;
}

// The operands before they are set, unlike anything else in the file.
const char kJump[] = "\x11\x22\x33\x44", kAddress[] = "\x55\x66\x77\x00";
const char kSource[] = R"(
  .text
  .globl _entry, _address, _words
  .p2align 4
_entry:
  .byte 0xE9, 0x11, 0x22, 0x33, 0x44        # jmp
_address:
  .byte 0xB8, 0x55, 0x66, 0x77, 0x00, 0xC3  # mov $0x776655, %eax; ret
  .data
_words:
  .long _twice, _entry                      # for streams of fixups to write over
  .subsections_via_symbols
)";

class PatchedDylib : public toolbox::Workshop {
 protected:
  void SetUp() override {
    const toolbox::Outcome linked =
        link({assemble("text", kSource)}, {"_twice"}, {"_entry", "_address", "_words"});
    ASSERT_EQ(0, linked.status) << linked.output;
    bytes_ = toolbox::readFile(path("test.dylib"));
    options_.lookup = [](const std::string& name) {
      return name == "twice" ? reinterpret_cast<void*>(&twice) : nullptr;
    };
  }

  // The offset of an operand in __TEXT, which starts the file, as two bytes of a stream.
  std::string place(const std::string& operand) const {
    const size_t offset = bytes_.find(operand);
    EXPECT_GT(size_t{1} << 14, offset);
    return {static_cast<char>(offset | 0x80), static_cast<char>(offset >> 7)};
  }

  // Where the first load command of this kind begins.
  size_t commandOffset(uint32_t kind) const {
    size_t offset = sizeof(macho::Header);
    for (macho::Command command; offset + sizeof command <= bytes_.size(); offset += command.size) {
      std::memcpy(&command, &bytes_[offset], sizeof command);
      if (command.kind == kind) return offset;
      if (command.size == 0) break;
    }
    ADD_FAILURE() << "no load command " << kind;
    return 0;
  }

  macho::DyldInfoCommand info() const {
    macho::DyldInfoCommand info;
    std::memcpy(&info, &bytes_[commandOffset(macho::kDyldInfoOnly)], sizeof info);
    return info;
  }

  // The offset and size are of the stream that is there, and long enough.
  void replaceStream(uint32_t offset, uint32_t size, std::string stream) {
    ASSERT_LE(stream.size(), size);
    stream.resize(size);
    bytes_.replace(offset, size, stream);
  }

  macho::Image load() { return macho::load(write("patched.dylib", bytes_), options_); }

  std::string bytes_;
  macho::LoadOptions options_;
};

class TextRelocation : public PatchedDylib {};
class Reexport : public PatchedDylib {};

TEST_F(TextRelocation, OfAnAddressInTheImageMovesWithIt) {
  const uint32_t entry = bytes_.find(kJump) - 1;
  bytes_.replace(bytes_.find(kAddress), sizeof entry, reinterpret_cast<const char*>(&entry), sizeof entry);
  // Type text-absolute, segment 0, the operand behind _address's first byte.
  const std::string operand = {static_cast<char>((entry + 6) | 0x80), static_cast<char>((entry + 6) >> 7)};
  replaceStream(info().rebaseOffset, info().rebaseSize, "\x12\x20" + operand + "\x51");
  const macho::Image image = load();
  EXPECT_EQ(image.symbol("_entry"), function<void*()>(image, "_address")());
}

TEST_F(TextRelocation, OfAnImportIsItsAddress) {
  const std::string symbol("_twice\0", 7);
  replaceStream(info().bindOffset, info().bindSize,
                "\x11\x40" + symbol + "\x52\x70" + place(kAddress) + "\x90");
  EXPECT_EQ(reinterpret_cast<void*>(&twice), function<void*()>(load(), "_address")());
}

TEST_F(TextRelocation, OfACallIsTheDistanceToTheImport) {
  const std::string symbol("_twice\0", 7);
  replaceStream(info().bindOffset, info().bindSize, "\x11\x40" + symbol + "\x53\x70" + place(kJump) + "\x90");
  EXPECT_EQ(42, function<int(int)>(load())(21));
}

TEST_F(TextRelocation, OfTextThatIsNeverWritableIsRefused) {
  macho::SegmentCommand text;
  std::memcpy(&text, &bytes_[sizeof(macho::Header)], sizeof text);
  text.maximumProtection = macho::kRead | macho::kExecute;
  std::memcpy(&bytes_[sizeof(macho::Header)], &text, sizeof text);
  replaceStream(info().rebaseOffset, info().rebaseSize, "\x12\x20" + place(kAddress) + "\x51");
  const std::string file = write("patched.dylib", bytes_);
  EXPECT_EQ(file + ": an address is to be set in __TEXT, which is not writable; build or copy the file again",
            loadError(file, options_));
}

TEST_F(Reexport, OfALibraryIsWhatTheProcessHas) {
  EXPECT_EQ(nullptr, load().symbol("_twice"));
  const uint32_t kind = macho::kReexportDylib;
  std::memcpy(&bytes_[commandOffset(macho::kLoadDylib)], &kind, sizeof kind);
  const macho::Image image = load();
  EXPECT_EQ(reinterpret_cast<void*>(&twice), image.symbol("_twice"));
  EXPECT_EQ(nullptr, image.symbol("_nowhere"));
  EXPECT_EQ(image.base(), static_cast<uint8_t*>(image.symbol("_entry")) - bytes_.find(kJump) + 1);
}

TEST_F(Reexport, OfASymbolMayHaveAnotherName) {
  // The root's only edge leads to a re-export from library 1, there "_twice".
  replaceStream(info().exportOffset, info().exportSize, std::string("\0\1_f\0\6\x09\x08\1_twice\0\0", 17));
  const macho::Image image = load();
  EXPECT_EQ(reinterpret_cast<void*>(&twice), image.symbol("_f"));
  EXPECT_EQ(nullptr, image.symbol("_twice"));
}

}  // namespace
