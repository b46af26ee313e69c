// format/: what linker/, loader/ and debugger/ share: the records of a Mach-O file, and reading that checks
// every access, so that linking needs no loader and loading no linker. It includes nothing else of the
// project.
//
// Here: the records of an i386 Mach-O file, as they lie in it: little-endian, like every machine this runs
// on.
#pragma once

#include <bit>
#include <cstdint>
#include <string>

namespace macho {

static_assert(std::endian::native == std::endian::little);

inline constexpr uint32_t kPageSize = 0x1000;

struct Header {
  uint32_t magic, cpuType, cpuSubtype, fileType, commandCount, commandSize, flags;
};
inline constexpr uint32_t kMagic32 = 0xFEEDFACE;
inline constexpr uint32_t kCpuI386 = 7, kCpuSubtypeAll = 3;
inline constexpr uint32_t kFileObject = 1, kFileDylib = 6, kFileDebug = 10;
inline constexpr uint32_t kNoUndefined = 0x1, kForDynamicLinker = 0x4, kTwoLevel = 0x80,
                          kSubsectionsViaSymbols = 0x2000, kNoReexports = 0x100000;

struct Command {
  uint32_t kind, size;
};
inline constexpr uint32_t kMustUnderstand = 0x80000000;
inline constexpr uint32_t kSegment = 0x1, kSymbolTable = 0x2, kDynamicSymbolTable = 0xB, kLoadDylib = 0xC,
                          kIdDylib = 0xD, kInitRoutine = 0x11, kLoadWeakDylib = 0x18 | kMustUnderstand,
                          kUUID = 0x1B, kRunPath = 0x1C | kMustUnderstand,
                          kReexportDylib = 0x1F | kMustUnderstand, kLazyLoadDylib = 0x20, kDyldInfo = 0x22,
                          kDyldInfoOnly = 0x22 | kMustUnderstand, kLoadUpwardDylib = 0x23 | kMustUnderstand,
                          kMinimumMacOS = 0x24;

struct SegmentCommand {
  Command command;
  char name[16];
  uint32_t address, memorySize, fileOffset, fileSize, maximumProtection, protection, sectionCount, flags;
};
inline constexpr uint32_t kRead = 1, kWrite = 2, kExecute = 4;

struct SectionRecord {
  char name[16], segment[16];
  uint32_t address, size, offset, alignment, relocationOffset, relocationCount, flags, reserved1, reserved2;

  uint32_t type() const { return flags & 0xFF; }
  bool hasInstructions() const;
  bool isZeroFilled() const;  // nothing of it is in the file
};
inline constexpr uint32_t kRegular = 0x0, kZeroFill = 0x1, kCStrings = 0x2, k4ByteLiterals = 0x3,
                          k8ByteLiterals = 0x4, kNonLazyPointers = 0x6, kLazyPointers = 0x7, kStubs = 0x8,
                          kInitFunctions = 0x9, kTermFunctions = 0xA, k16ByteLiterals = 0xE,
                          kThreadLocalFirst = 0x11, kThreadLocalLast = 0x15;
inline constexpr uint32_t kPureInstructions = 0x80000000, kSomeInstructions = 0x400;
inline constexpr uint32_t kLargeZeroFill = 0xC, kThreadLocalZeroFill = 0x12;

inline bool SectionRecord::hasInstructions() const {
  return flags & (kPureInstructions | kSomeInstructions);
}
inline bool SectionRecord::isZeroFilled() const {
  return type() == kZeroFill || type() == kLargeZeroFill || type() == kThreadLocalZeroFill;
}

struct DylibCommand {
  Command command;
  uint32_t nameOffset, timestamp, currentVersion, compatibilityVersion;
};

struct DyldInfoCommand {
  Command command;
  uint32_t rebaseOffset, rebaseSize, bindOffset, bindSize, weakBindOffset, weakBindSize, lazyBindOffset,
      lazyBindSize, exportOffset, exportSize;
};

struct SymbolTableCommand {
  Command command;
  uint32_t symbolOffset, symbolCount, stringOffset, stringSize;
};

struct DynamicSymbolTableCommand {
  Command command;
  uint32_t localFirst, localCount, definedFirst, definedCount, undefinedFirst, undefinedCount;
  uint32_t contentsOffset, contentsCount, modulesOffset, modulesCount, referencesOffset, referencesCount;
  uint32_t indirectOffset, indirectCount;
  uint32_t externalRelocationOffset, externalRelocationCount, localRelocationOffset, localRelocationCount;
};
inline constexpr uint32_t kIndirectLocal = 0x80000000, kIndirectAbsolute = 0x40000000;

struct UUIDCommand {
  Command command;
  uint8_t uuid[16];
};

struct MinimumVersionCommand {
  Command command;
  uint32_t version, sdk;
};

struct SymbolRecord {
  uint32_t nameOffset;
  uint8_t type, section;
  uint16_t description;
  uint32_t value;
};
inline constexpr uint8_t kDebugSymbol = 0xE0, kPrivateExternal = 0x10, kExternal = 0x01, kTypeMask = 0x0E;
inline constexpr uint8_t kUndefined = 0x0, kDefinedInSection = 0xE;
inline constexpr uint16_t kWeakReference = 0x40, kWeakDefinition = 0x80, kAlternateEntry = 0x200;

// A relocation is two words; the top bit of the first tells which of two layouts they have.
struct RelocationRecord {
  uint32_t first, second;

  bool scattered() const { return first >> 31; }
  uint32_t address() const { return scattered() ? first & 0xFFFFFF : first; }
  bool pcRelative() const { return scattered() ? first >> 30 & 1 : second >> 24 & 1; }
  uint32_t length() const { return scattered() ? first >> 28 & 3 : second >> 25 & 3; }  // log2 of the bytes
  uint32_t type() const { return scattered() ? first >> 24 & 15 : second >> 28; }
  uint32_t value() const { return second; }              // scattered: the address of what is referred to
  bool external() const { return second >> 27 & 1; }     // plain: a symbol, not a section
  uint32_t number() const { return second & 0xFFFFFF; }  // plain: symbol from 0, or section from 1
};
inline constexpr uint32_t kVanilla = 0, kPair = 1, kSectionDifference = 2, kLocalSectionDifference = 4,
                          kThreadLocal = 5;

inline constexpr uint8_t kOpcodeMask = 0xF0, kImmediateMask = 0x0F;
inline constexpr uint8_t kPointerType = 1, kTextAbsoluteType = 2, kTextRelativeType = 3;

namespace rebase {
inline constexpr uint8_t kDone = 0x00, kSetType = 0x10, kSetSegmentAndOffset = 0x20, kAddAddress = 0x30,
                         kAddAddressScaled = 0x40, kDoTimes = 0x50, kDoULEBTimes = 0x60, kDoAddAddress = 0x70,
                         kDoULEBTimesSkipping = 0x80;
}

namespace bind {
inline constexpr uint8_t kDone = 0x00, kSetOrdinal = 0x10, kSetOrdinalULEB = 0x20, kSetSpecialOrdinal = 0x30,
                         kSetSymbol = 0x40, kSetType = 0x50, kSetAddend = 0x60, kSetSegmentAndOffset = 0x70,
                         kAddAddress = 0x80, kDo = 0x90, kDoAddAddress = 0xA0, kDoAddAddressScaled = 0xB0,
                         kDoULEBTimesSkipping = 0xC0;
inline constexpr uint8_t kWeakImport = 0x1;
}  // namespace bind

// Export flags: the low two bits are the kind, 0 being an ordinary address.
inline constexpr uint32_t kExportKindMask = 0x3, kExportAbsolute = 0x2, kExportReexport = 0x8,
                          kExportStubAndResolver = 0x10;

// A name field holds up to 16 characters and no terminator when full.
inline std::string fixedName(const char (&name)[16]) {
  size_t length = 0;
  while (length < sizeof name && name[length]) ++length;
  return std::string(name, length);
}

}  // namespace macho
