#include "macho/loader/frames.h"

#include "macho/format/eh_frame.h"

// The unwinder's own, in the compiler's run time.
extern "C" void __register_frame(void* frames);
extern "C" void __deregister_frame(void* frames);

namespace macho {
namespace {

// Darwin's i386 numbers ESP 5 and EBP 4, Linux the other way round. The two numbers differ in one bit, which
// in every encoding of a register is bit 0 of the first byte.
void swapRegister(uint8_t& byte) {
  if ((byte & 0x3E) == 4) byte ^= 1;
}

// The operands of the register rules: r register, n number, 1 2 4 bytes. Null: not understood, since what is
// inside (an expression, an absolute address) would have to be translated too.
const char* operands(uint8_t opcode) {
  static const char* const table[] = {
      /* 00 nop */ "",
      /* 01 set location */ nullptr,
      /* 02 advance */ "1",
      /* 03 advance */ "2",
      /* 04 advance */ "4",
      /* 05 offset */ "rn",
      /* 06 restore */ "r",
      /* 07 undefined */ "r",
      /* 08 same value */ "r",
      /* 09 register */ "rr",
      /* 0A remember */ "",
      /* 0B restore state */ "",
      /* 0C CFA */ "rn",
      /* 0D CFA register */ "r",
      /* 0E CFA offset */ "n",
      /* 0F expression */ nullptr,
      /* 10 expression */ nullptr,
      /* 11 offset, signed */ "rn",
      /* 12 CFA, signed */ "rn",
      /* 13 CFA offset, signed */ "n",
      /* 14 value offset */ "rn",
      /* 15 value offset, signed */ "rn",
  };
  constexpr uint8_t kArgumentsSize = 0x2E;
  if (opcode == kArgumentsSize) return "n";
  return opcode < std::size(table) ? table[opcode] : nullptr;
}

void swapStackRegisters(uint8_t* data, Bytes rules) {
  Cursor cursor(rules);
  while (!cursor.atEnd()) {
    uint8_t& first = data[cursor.offset()];
    const auto opcode = cursor.next<uint8_t>();
    const uint8_t packed = opcode & 0xC0;  // not 0: the operand is in the low six bits
    if (packed) {
      constexpr uint8_t kAdvance = 0x40, kOffset = 0x80;
      if (packed != kAdvance) swapRegister(first);
      if (packed == kOffset) cursor.uleb();
      continue;
    }
    const char* kinds = operands(opcode);
    if (!kinds)
      throw FormatError("its __eh_frame has a rule that is not understood: " + std::to_string(opcode));
    for (; *kinds; ++kinds) {
      if (*kinds == 'r') swapRegister(data[cursor.offset()]);
      if (*kinds == 'r' || *kinds == 'n')
        cursor.uleb();
      else
        cursor.skip(*kinds - '0');
    }
  }
}

bool inside(Bytes image, uint32_t address) {
  return address - reinterpret_cast<uintptr_t>(image.data()) < image.size();
}

// The field holds a distance from itself: when the table moves and what it names does not, the distance grows
// by as much.
void moveField(uint8_t* field, const uint8_t* original, Bytes image) {
  uint32_t distance;
  std::memcpy(&distance, original, sizeof distance);
  const uint32_t target = reinterpret_cast<uintptr_t>(original) + distance;
  if (!inside(image, target)) throw FormatError("malformed: its __eh_frame names an address outside of it");
  distance = target - reinterpret_cast<uintptr_t>(field);
  std::memcpy(field, &distance, sizeof distance);
}

// The fields are where a function begins, by its distance, and how long it is. One that reached further would
// stand for functions of other libraries, and the next exception would take them for it.
void requireFunctionInside(const uint8_t* fields, Bytes image) {
  uint32_t distance, length;
  std::memcpy(&distance, fields, sizeof distance);
  std::memcpy(&length, fields + sizeof distance, sizeof length);
  const uint32_t begin = reinterpret_cast<uintptr_t>(fields) + distance;
  if (length > image.size() - (begin - reinterpret_cast<uintptr_t>(image.data()))) {
    throw FormatError("malformed: its __eh_frame has a function that ends outside of it");
  }
}

}  // namespace

Frames::Frames(Bytes frames, Bytes image) {
  const FrameMap map = mapFrames(frames);
  if (map.end == 0) return;
  // One word more than the table: the terminator, zero from the start.
  auto copy = std::make_unique<uint32_t[]>(map.end / 4 + 2);
  auto* bytes = reinterpret_cast<uint8_t*>(copy.get());
  std::memcpy(bytes, frames.data(), map.end);
  for (const auto* fields : {&map.functions, &map.languageData, &map.personalities}) {
    for (const uint32_t offset : *fields) moveField(bytes + offset, frames.data() + offset, image);
  }
  for (const uint32_t offset : map.functions) requireFunctionInside(frames.data() + offset, image);
  for (const auto& range : map.instructions) {
    swapStackRegisters(bytes + range.offset, frames.slice(range.offset, range.size));
  }
  copy_ = std::move(copy);
  __register_frame(bytes);
}

Frames::~Frames() {
  if (copy_) __deregister_frame(copy_.get());
}

}  // namespace macho
