#include "macho/linker/section_rules.h"

#include <algorithm>

#include "macho/format/bytes.h"
#include "macho/format/format.h"

namespace macho {
namespace {

constexpr uint32_t kCode = kPureInstructions | kSomeInstructions;

constexpr SectionRule kRules[] = {
    {"__TEXT", "__text", "__text", kCode},
    {"__TEXT", "__textcoal_nt", "__text", kCode},
    {"__TEXT", "__const", "__const", kRegular},
    {"__TEXT", "__const_coal", "__const", kRegular},
    {"__TEXT", "__cstring", "__cstring", kCStrings},
    {"__TEXT", "__ustring", "__ustring", kRegular},
    {"__TEXT", "__literal4", "__literal4", k4ByteLiterals},
    {"__TEXT", "__literal8", "__literal8", k8ByteLiterals},
    {"__TEXT", "__literal16", "__literal16", k16ByteLiterals},
    {"__TEXT", "__gcc_except_tab", "__gcc_except_tab", kRegular},
    {"__TEXT", "__eh_frame", "__eh_frame", kRegular},
    {"__DATA", "__const", "__const", kRegular},
    {"__DATA", "__data", "__data", kRegular},
    {"__DATA", "__datacoal_nt", "__data", kRegular},
    // Zero-fill sections come last: they have no bytes in the file.
    {"__DATA", "__common", "__common", kZeroFill},
    {"__DATA", "__bss", "__bss", kZeroFill},
};

bool isInitializer(const InputSection& section) {
  return section.type == kInitFunctions || section.type == kTermFunctions || section.name == "__StaticInit" ||
         section.name == "__mod_init_func" || section.name == "__mod_term_func";
}

bool isThreadLocal(const InputSection& section) {
  return (section.type >= kThreadLocalFirst && section.type <= kThreadLocalLast) ||
         section.name.starts_with("__thread_");
}

}  // namespace

std::span<const SectionRule> sectionRules() {
  return kRules;
}

bool isDropped(const InputSection& section) {
  return section.segment == "__LD" || section.segment == "__DWARF";
}

void requireKnown(const InputSection& section) {
  if (isDropped(section) || section.type == kNonLazyPointers) return;
  if (isInitializer(section)) {
    throw FormatError("has a static initialiser or a function for the exit (" + section.label() +
                      "); make the variable constant-initialised and trivially destroyed");
  }
  if (isThreadLocal(section)) {
    throw FormatError("has thread-local variables (" + section.label() + "); use plain ones");
  }
  if (section.segment == "__LLVM") {
    throw FormatError("holds compiler bitcode (" + section.label() + "); compile it without -fembed-bitcode");
  }
  const auto matches = [&](const SectionRule& rule) {
    return section.segment == rule.segment && section.name == rule.name &&
           (section.type == kZeroFill) == (rule.flags == kZeroFill);
  };
  if (std::none_of(std::begin(kRules), std::end(kRules), matches)) {
    throw FormatError("has an unknown section " + section.label() +
                      "; keep its contents out of the source, or give the section a rule in the linker");
  }
}

}  // namespace macho
