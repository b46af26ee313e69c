#include "macho/linker/frames.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "macho/format/bytes.h"
#include "macho/format/eh_frame.h"
#include "macho/linker/error.h"

namespace macho {
namespace {

typedef std::vector<uint8_t> Code;

// Rules, in Darwin's numbers of registers: %ebp is 4, %esp 5, the return address 8.
constexpr uint8_t kOffset = 0x80, kAdvance = 0x40, kPacked = 0xC0, kNothing = 0x00, kSameValue = 0x08,
                  kFrame = 0x0C, kFrameRegister = 0x0D, kFrameOffset = 0x0E;
const Code kAtEntry = {kFrame, 5, 4, kOffset | 8, 1};
const Code kInFrame = {kFrame, 4, 8, kOffset | 4, 2, kOffset | 8, 1};
const Code kBackToEntry = {kFrame, 5, 4, kSameValue, 4};
// From one to the other, beside push %ebp; mov %esp, %ebp.
const Code kIntoFrame = {kAdvance | 1, kFrameOffset, 8, kOffset | 4, 2, kAdvance | 2, kFrameRegister, 4};
const Code kMakeFrame = {0x55, 0x89, 0xE5};

// In a function's record.
constexpr uint32_t kCommonField = 4, kFunctionField = 8, kAugmentationSize = 16;

bool startsWith(const Code& code, size_t offset, const Code& start) {
  return offset <= code.size() && code.size() - offset >= start.size() &&
         std::equal(start.begin(), start.end(), code.begin() + static_cast<ptrdiff_t>(offset));
}

// Whether these bytes of code are pushes of registers and subtractions from %esp, and no part of another
// instruction.
bool isFrameSetup(const Code& code, size_t begin, size_t end) {
  while (begin < end) {
    if (begin >= code.size()) return false;
    if ((code[begin] & 0xF8) == 0x50) {
      begin += 1;
    } else if (startsWith(code, begin, {0x83, 0xEC})) {
      begin += 3;
    } else if (startsWith(code, begin, {0x81, 0xEC})) {
      begin += 6;
    } else {
      return false;
    }
  }
  return begin == end;
}

// The rules of a function with the usual beginning, without what the common record says now; nothing for
// another.
std::optional<Code> savedRegisters(const Code& rules, const Code& function) {
  if (!startsWith(rules, 0, kIntoFrame) || !startsWith(function, 0, kMakeFrame)) return std::nullopt;
  size_t next = kIntoFrame.size();
  if (next < rules.size() && (rules[next] & kPacked) == kAdvance) {
    const size_t begin = kMakeFrame.size();
    if (!isFrameSetup(function, begin, begin + (rules[next] & ~kPacked))) return std::nullopt;
    ++next;
  }
  Code saved;
  while (next + 1 < rules.size() && (rules[next] & kPacked) == kOffset && rules[next + 1] < 0x80) {
    saved.insert(saved.end(), {rules[next], rules[next + 1]});
    next += 2;
  }
  const bool isAll = std::all_of(rules.begin() + static_cast<ptrdiff_t>(next), rules.end(),
                                 [](uint8_t rule) { return rule == kNothing; });
  return isAll ? std::optional(saved) : std::nullopt;
}

Code bytesFrom(const InputSection& section, size_t offset) {
  return Code(section.bytes.begin() + static_cast<ptrdiff_t>(offset), section.bytes.end());
}

class Shortener {
 public:
  Shortener(std::vector<Object>& objects, const Symbols& symbols) : objects_(objects), symbols_(symbols) {}

  void run() {
    for (uint32_t i = 0; i < objects_.size(); ++i) {
      changedCommons_.assign(objects_[i].sections.size(), false);
      // A common record comes before those that refer to it.
      for (uint32_t j = 0; j < objects_[i].sections.size(); ++j) {
        const InputSection& record = objects_[i].sections[j];
        if (!record.dropped && record.name == "__eh_frame" && record.size) shorten(i, j);
      }
    }
  }

 private:
  void shorten(uint32_t object, uint32_t section) {
    InputSection& record = objects_[object].sections[section];
    const Fixup* common = fixupAt(record, kCommonField);
    if (!common) {
      changedCommons_[section] = changeCommon(record);
    } else if (changedCommons_[common->minus.index]) {
      changeFunction(object, record);
    }
  }

  static const Fixup* fixupAt(const InputSection& record, uint32_t offset) {
    const auto isIt = [&](const Fixup& fixup) { return fixup.offset == offset; };
    const auto found = std::find_if(record.fixups.begin(), record.fixups.end(), isIt);
    return found == record.fixups.end() ? nullptr : &*found;
  }

  static bool changeCommon(InputSection& record) {
    const FrameMap map = mapFrames(Bytes(record.bytes.data(), record.bytes.size()));
    const size_t offset = map.instructions.front().offset;
    Code rules = bytesFrom(record, offset);
    while (!rules.empty() && rules.back() == kNothing) rules.pop_back();
    if (rules != kAtEntry) return false;
    setRules(record, offset, kInFrame);
    return true;
  }

  void changeFunction(uint32_t object, InputSection& record) const {
    const size_t augmentation = record.bytes[kAugmentationSize];
    if (augmentation != 0 && augmentation != 4) {
      throw LinkError(objects_[object].path,
                      "malformed: a record of its __eh_frame has an unusual augmentation; compile it again");
    }
    const size_t offset = kAugmentationSize + 1 + augmentation;
    const Code rules = bytesFrom(record, offset);
    if (const auto saved = savedRegisters(rules, functionOf(object, record))) {
      setRules(record, offset, *saved);
      return;
    }
    Code fromEntry = kBackToEntry;
    fromEntry.insert(fromEntry.end(), rules.begin(), rules.end());
    setRules(record, offset, fromEntry);
  }

  // Puts other rules behind what a record starts with.
  static void setRules(InputSection& record, size_t offset, const Code& rules) {
    record.bytes.resize(offset);
    record.bytes.insert(record.bytes.end(), rules.begin(), rules.end());
    record.bytes.resize((record.bytes.size() + 3) / 4 * 4, kNothing);
    record.size = static_cast<uint32_t>(record.bytes.size());
    const uint32_t length = record.size - 4;
    std::memcpy(record.bytes.data(), &length, sizeof length);
  }

  Code functionOf(uint32_t object, const InputSection& record) const {
    const Fixup* fixup = fixupAt(record, kFunctionField);
    if (!fixup) return {};
    const auto location = symbols_.locate(object, fixup->target);
    if (!location) return {};
    const InputSection& function = objects_[location->object].sections[location->section];
    const auto offset = static_cast<size_t>(location->offset);
    return offset < function.bytes.size() ? bytesFrom(function, offset) : Code();
  }

  std::vector<Object>& objects_;
  const Symbols& symbols_;
  std::vector<bool> changedCommons_;  // of the object that is looked at
};

}  // namespace

void shortenFrames(std::vector<Object>& objects, const Symbols& symbols) {
  Shortener(objects, symbols).run();
}

}  // namespace macho
