#include "macho/loader/file.h"

#include <algorithm>

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
    size_t offset = sizeof header;
    for (uint32_t i = 0; i < header.commandCount; ++i) {
      const auto command = file_.read<Command>(offset);
      if (command.size < sizeof command) throw FormatError("malformed: a load command has no size");
      readCommand(command.kind, file_.slice(offset, command.size));
      offset += command.size;
    }
    if (dylib_.segments.empty()) throw FormatError("malformed: it has no segment");
    if (!hasDyldInfo_) throw FormatError("of a format older than macOS 10.6 reads first");
    measureMemory();
    if (frames_) checkFrames();
    return dylib_;
  }

 private:
  void readCommand(uint32_t kind, Bytes command) {
    switch (kind) {
      case kSegment:
        return readSegment(command);
      case kDyldInfo:
      case kDyldInfoOnly:
        return readDyldInfo(command);
      case kIdDylib:
        dylib_.version = command.read<DylibCommand>(0).currentVersion;
        return;
      case kLoadDylib:
      case kLoadWeakDylib:
      case kReexportDylib:
      case kLazyLoadDylib:
      case kLoadUpwardDylib:
        dylib_.libraries.push_back(command.text(command.read<DylibCommand>(0).nameOffset));
        return;
    }
  }

  void readSegment(Bytes command) {
    const auto segment = command.read<SegmentCommand>(0);
    file_.slice(segment.fileOffset, segment.fileSize);
    if (segment.address % kPageSize) throw FormatError("malformed: a segment begins inside a page");
    if (segment.fileSize > segment.memorySize) {
      throw FormatError("malformed: a segment has more bytes in the file than in memory");
    }
    if ((segment.protection & kWrite) && (segment.protection & kExecute)) {
      throw FormatError("a segment is writable and executable at once");
    }
    dylib_.segments.push_back(segment);
    for (uint32_t i = 0; i < segment.sectionCount; ++i) {
      const auto section = command.read<SectionRecord>(sizeof segment + i * sizeof(SectionRecord));
      requireInside(segment, section);
      readSection(section);
    }
  }

  static void requireInside(const SegmentCommand& segment, const SectionRecord& section) {
    const uint32_t offset = section.address - segment.address;
    if (section.address < segment.address || offset > segment.memorySize ||
        section.size > segment.memorySize - offset) {
      throw FormatError("malformed: its section " + fixedName(section.name) + " lies outside of its segment");
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
    if (fixedName(section.name) == "__eh_frame" && section.size) {
      frames_ = range;
    }
    if (fixedName(section.name) == "__stub_helper") dylib_.stubHelper = range;
    if (section.type() == kLazyPointers) dylib_.lazyPointers.push_back(range);
  }

  void readDyldInfo(Bytes command) {
    const auto info = command.read<DyldInfoCommand>(0);
    dylib_.rebases = file_.slice(info.rebaseOffset, info.rebaseSize);
    dylib_.binds = file_.slice(info.bindOffset, info.bindSize);
    dylib_.lazyBinds = file_.slice(info.lazyBindOffset, info.lazyBindSize);
    dylib_.exports = file_.slice(info.exportOffset, info.exportSize);
    hasDyldInfo_ = true;
  }

  void measureMemory() {
    std::vector<SegmentCommand> sorted = dylib_.segments;
    std::sort(sorted.begin(), sorted.end(),
              [](const auto& a, const auto& b) { return a.address < b.address; });
    const uint64_t low = sorted.front().address;
    uint64_t high = low;
    for (const SegmentCommand& segment : sorted) {
      if (segment.address < high) throw FormatError("malformed: segments overlap in memory");
      const uint64_t end = uint64_t{segment.address} + segment.memorySize;
      high = (end + kPageSize - 1) / kPageSize * kPageSize;
    }
    if (high == low || high - low > kMemoryLimit) {
      throw FormatError("malformed: it asks for " + std::to_string(high - low) + " bytes of memory");
    }
    dylib_.memory = {static_cast<uint32_t>(low), static_cast<uint32_t>(high - low)};
  }

  void checkFrames() {
    const auto holds = [this](const SegmentCommand& segment) {
      const uint32_t offset = frames_->address - segment.address;
      return frames_->address >= segment.address && offset <= segment.fileSize &&
             segment.fileSize - offset >= frames_->size;
    };
    if (std::none_of(dylib_.segments.begin(), dylib_.segments.end(), holds)) {
      throw FormatError("malformed: its __eh_frame section lies outside of its segments");
    }
    dylib_.frames = frames_;
  }

  Bytes file_;
  DylibFile dylib_;
  std::optional<DylibFile::Range> frames_;
  bool hasDyldInfo_ = false;
};

}  // namespace

DylibFile readDylib(Bytes file) {
  return Reader(file).read();
}

}  // namespace macho
