// The frame records that macho-link makes shorter, and exceptions through functions whose records it must
// not.
#include <cstring>

#include "tests/macho/toolbox.h"

namespace {

using toolbox::function;
using toolbox::Outcome;

typedef void Callback(int);

// A function without %ebp, which keeps %ebx elsewhere.
const char kWithoutFrame[] = R"(
asm(".text\n.globl _odd\n_odd:\n.cfi_startproc\n"
    "subl $28, %esp\n.cfi_adjust_cfa_offset 28\nmovl %ebx, 24(%esp)\n.cfi_offset %ebx, -8\n"
    "xorl %ebx, %ebx\nmovl 36(%esp), %eax\nmovl %eax, (%esp)\ncall *32(%esp)\n"
    "movl 24(%esp), %ebx\naddl $28, %esp\nret\n.cfi_endproc");
extern "C" void odd(void (*callback)(int), int argument);
)";

// A call before the last register is saved: where it throws, the place of that register holds something else.
const char kCallsEarly[] = R"(
asm(".text\n.globl _odd\n_odd:\n.cfi_startproc\n"
    "pushl %ebp\n.cfi_def_cfa_offset 8\n.cfi_offset %ebp, -8\nmovl %esp, %ebp\n.cfi_def_cfa_register %ebp\n"
    "subl $24, %esp\nmovl 12(%ebp), %eax\nmovl %eax, (%esp)\nmovl $0, 20(%esp)\ncall *8(%ebp)\n"
    "movl %ebx, 20(%esp)\n.cfi_offset %ebx, -12\nmovl 20(%esp), %ebx\nleave\nret\n.cfi_endproc");
extern "C" void odd(void (*callback)(int), int argument);
)";

const char kEntry[] = R"(
EXPORT int entry(void (*callback)(int), int argument) {
  int here = argument * 3;
  odd(callback, argument);
  return here + 1;
}
EXPORT int plain(void (*callback)(int), int argument) { callback(argument); callback(argument); return argument; }
)";

class Frames : public toolbox::Workshop {
 protected:
  std::string buildWith(const std::string& odd) const {
    return build(odd + kEntry, {}, {"_entry", "_plain", "_odd"});
  }
  std::string buildPlain() const {
    return build(
        std::string("__attribute__((noinline)) void odd(void (*callback)(int), int i) { callback(i); }") +
        kEntry);
  }

  std::string dump() const {
    return toolbox::run({LLVM_OBJDUMP, "--dwarf=frames", path("test.dylib")}).output;
  }

  void expectExceptionsPass() const {
    const macho::Image image = macho::load(path("test.dylib"));
    const auto entry = function<int(Callback*, int)>(image);
    EXPECT_EQ(16, entry([](int) {}, 5));
    for (int i = 0; i < 3; ++i) {
      try {
        entry([](int argument) { throw argument; }, 40 + i);
        ADD_FAILURE() << "nothing was thrown";
      } catch (int argument) {
        EXPECT_EQ(40 + i, argument);
      }
    }
  }
};

TEST_F(Frames, OfUsualFunctionsDoNotDescribeHowTheyAreMade) {
  buildPlain();
  const std::string dump = this->dump();
  EXPECT_NE(std::string::npos, dump.find(" FDE ")) << dump;
  EXPECT_EQ(std::string::npos, dump.find("DW_CFA_advance_loc")) << dump;
  EXPECT_NE(std::string::npos, dump.find("DW_CFA_offset")) << dump;
}

TEST_F(Frames, OfOtherFunctionsAreKept) {
  for (const char* odd : {kWithoutFrame, kCallsEarly}) {
    buildWith(odd);
    const std::string dump = this->dump();
    EXPECT_NE(std::string::npos, dump.find("DW_CFA_same_value")) << dump;
    EXPECT_NE(std::string::npos, dump.find("DW_CFA_advance_loc")) << dump;
    expectExceptionsPass();
  }
}

TEST_F(Frames, OfAnotherKindAreLeftAlone) {
  // A signal's frame: its common record is another one.
  std::string odd = kWithoutFrame;
  odd.replace(odd.find(".cfi_startproc"), 14,
              ".cfi_startproc simple\\n.cfi_def_cfa %esp, 4\\n.cfi_offset 8, -4");
  buildWith(odd);
  const std::string dump = this->dump();
  EXPECT_EQ(std::string::npos, dump.find("DW_CFA_same_value")) << dump;
  EXPECT_NE(std::string::npos, dump.find("DW_CFA_advance_loc")) << dump;
  expectExceptionsPass();
}

TEST_F(Frames, WithAnAddressAmongTheirRulesAreRefused) {
  const std::string object =
      compile("a", "extern \"C\" void call(); EXPORT int entry() { call(); return 1; }");
  // A copy of the code's relocation, behind all else, becomes one of the frame table.
  const std::string bytes = toolbox::readFile(object);
  const auto wordAt = [&](size_t offset) {
    uint32_t word;
    std::memcpy(&word, &bytes.at(offset), sizeof word);
    return word;
  };
  const size_t text = bytes.find("__text"), frames = bytes.find("__eh_frame");
  ASSERT_NE(std::string::npos, frames);
  constexpr size_t kSize = 16 + 16 + 4, kRelocations = kSize + 3 * 4;  // in a section's record
  const uint32_t size = wordAt(frames + kSize), end = static_cast<uint32_t>(bytes.size());
  for (const uint32_t place : {size - 4, size - 12, size - 24, size - 28}) {
    std::string changed = bytes + bytes.substr(wordAt(text + kRelocations), 8);
    std::memcpy(&changed[end], &place, sizeof place);
    const uint32_t relocations[] = {end, 1};
    std::memcpy(&changed[frames + kRelocations], relocations, sizeof relocations);
    const std::string broken = write("broken.o", changed);
    const Outcome linked = link({broken}, {"_call"});
    EXPECT_EQ(1, linked.status);
    EXPECT_EQ(0u, linked.output.find("macho-link: " + broken +
                                     ": malformed: its __eh_frame has an address in an unusual place"))
        << linked.output;
  }
}

}  // namespace
