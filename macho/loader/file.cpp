#include "macho/loader/file.h"

#include <algorithm>
#include <optional>

#include "macho/loader/checks.h"

namespace macho {
namespace {

// Far above any dylib and far below what would exhaust a 32-bit process.
constexpr uint64_t kMemoryLimit = 256u << 20;

class Reader {
 public:
  explicit Reader(Bytes file) : file_(file) {}

  DylibFile read() {
    const auto header = file_.read<Header>(0);
    if (header.magic != kMagic32) throw FormatError("not a 32-bit Mach-O file");
    if (header.cpuType != kCpuI386) throw FormatError("made for another processor than i386");
    if (header.fileType != kFileDylib) throw FormatError("not a dylib but another kind of Mach-O file");
    readCommands(file_.slice(sizeof header, header.commandSize), header.commandCount);
    if (dylib_.segments.empty()) throw FormatError("malformed: it has no segment");
    if (!info_) throw FormatError("of a format older than macOS 10.6 reads first");
    checkLayout(dylib_.segments, sizeof header + header.commandSize);
    checkStreams(file_, dylib_.segments, *info_);
    takeStreams();
    measureMemory();
    return dylib_;
  }

 private:
  void readCommands(Bytes commands, uint32_t count) {
    size_t offset = 0;
    for (uint32_t i = 0; i < count; ++i) {
      const auto command = commands.read<Command>(offset);
      if (command.size < sizeof command) throw FormatError("malformed: a load command has no size");
      readCommand(command.kind, commands.slice(offset, command.size));
      offset += command.size;
    }
    if (offset != commands.size()) throw FormatError("malformed: it has more load commands than it says");
  }

  void readCommand(uint32_t kind, Bytes command) {
    switch (kind) {
      case kSegment:
        return readSegment(command);
      case kDyldInfo:
      case kDyldInfoOnly:
        if (info_) throw FormatError("malformed: it says twice where its tables for the loader are");
        info_ = command.read<DyldInfoCommand>(0);
        return;
      case kIdDylib:
        dylib_.version = command.read<DylibCommand>(0).currentVersion;
        return;
      case kReexportDylib:
        dylib_.reexportsLibraries = true;
        [[fallthrough]];
      case kLoadDylib:
      case kLoadWeakDylib:
      case kLazyLoadDylib:
      case kLoadUpwardDylib:
        dylib_.libraries.push_back(command.text(command.read<DylibCommand>(0).nameOffset));
        return;
      case kInitRoutine:
        throw FormatError("it has a routine to run first, which this loader does not");
      case kRunPath:
        return;  // libraries are the process's own, whatever their paths
    }
    // All others tell debuggers and other tools something.
    if (kind & kMustUnderstand) {
      throw FormatError("it has a load command that this loader does not know: " +
                        std::to_string(kind & ~kMustUnderstand));
    }
  }

  void readSegment(Bytes command) {
    const auto segment = command.read<SegmentCommand>(0);
    checkSegment(file_, segment);
    dylib_.segments.push_back(segment);
    for (uint32_t i = 0; i < segment.sectionCount; ++i) {
      const auto section = command.read<SectionRecord>(sizeof segment + i * sizeof(SectionRecord));
      checkSection(segment, section);
      readSection(section);
    }
  }

  void readSection(const SectionRecord& section) {
    const DylibFile::Range range = {section.address, section.size};
    if (section.type() == kInitFunctions && section.size) {
      throw FormatError("it has static initialisers, which this loader does not run");
    }
    if (section.type() >= kThreadLocalFirst && section.type() <= kThreadLocalLast) {
      throw FormatError("it has thread-local variables");
    }
    if (fixedName(section.name) == "__eh_frame" && section.size) dylib_.frames = range;
    if (fixedName(section.name) == "__stub_helper") dylib_.stubHelper = range;
    if (section.type() == kLazyPointers) dylib_.lazyPointers.push_back(range);
  }

  void takeStreams() {
    dylib_.rebases = file_.slice(info_->rebaseOffset, info_->rebaseSize);
    dylib_.binds = file_.slice(info_->bindOffset, info_->bindSize);
    dylib_.lazyBinds = file_.slice(info_->lazyBindOffset, info_->lazyBindSize);
    dylib_.exports = file_.slice(info_->exportOffset, info_->exportSize);
  }

  void measureMemory() {
    uint64_t low = UINT64_MAX, high = 0;
    for (const SegmentCommand& segment : dylib_.segments) {
      const uint64_t end = uint64_t{segment.address} + segment.memorySize;
      low = std::min<uint64_t>(low, segment.address);
      high = std::max(high, (end + kPageSize - 1) / kPageSize * kPageSize);
    }
    if (high == low || high - low > kMemoryLimit) {
      throw FormatError("malformed: it asks for " + std::to_string(high - low) + " bytes of memory");
    }
    dylib_.memory = {static_cast<uint32_t>(low), static_cast<uint32_t>(high - low)};
  }

  Bytes file_;
  DylibFile dylib_;
  std::optional<DyldInfoCommand> info_;
};

}  // namespace

DylibFile readDylib(Bytes file) {
  return Reader(file).read();
}

}  // namespace macho
