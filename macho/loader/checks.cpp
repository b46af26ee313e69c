#include "macho/loader/checks.h"

#include <algorithm>

namespace macho {
namespace {

void sortBy(std::vector<SegmentCommand>& segments, uint32_t SegmentCommand::*key) {
  std::sort(segments.begin(), segments.end(),
            [key](const auto& a, const auto& b) { return a.*key < b.*key; });
}

void checkOverlap(std::vector<SegmentCommand> segments, uint32_t SegmentCommand::*begin,
                  uint32_t SegmentCommand::*size, const char* where) {
  sortBy(segments, begin);
  uint64_t end = 0;
  for (const SegmentCommand& segment : segments) {
    if (segment.*size == 0) continue;
    if (segment.*begin < end) throw FormatError(std::string("malformed: segments overlap in ") + where);
    end = uint64_t{segment.*begin} + segment.*size;
  }
}

struct Stream {
  uint32_t offset, size;
};

bool isPadding(Bytes bytes) {
  return std::all_of(bytes.data(), bytes.data() + bytes.size(), [](uint8_t byte) { return byte == 0; });
}

}  // namespace

void checkSegment(Bytes file, const SegmentCommand& segment) {
  file.slice(segment.fileOffset, segment.fileSize);
  if (segment.address % kPageSize || segment.fileOffset % kPageSize) {
    throw FormatError("malformed: a segment begins inside a page");
  }
  if (segment.fileSize > segment.memorySize) {
    throw FormatError("malformed: a segment has more bytes in the file than in memory");
  }
  if (segment.maximumProtection & ~(kRead | kWrite | kExecute) ||
      segment.protection & ~segment.maximumProtection) {
    throw FormatError("malformed: a segment's protection is none");
  }
  if ((segment.protection & kWrite) && (segment.protection & kExecute)) {
    throw FormatError("a segment is writable and executable at once");
  }
}

void checkSection(const SegmentCommand& segment, const SectionRecord& section) {
  const std::string name = "malformed: its section " + fixedName(section.name);
  const uint32_t offset = section.address - segment.address;
  const uint32_t room = section.isZeroFilled() ? segment.memorySize : segment.fileSize;
  if (section.address < segment.address || offset > room || section.size > room - offset) {
    throw FormatError(name + " lies outside of its segment");
  }
  if (section.size == 0) return;
  if (!section.isZeroFilled() && section.offset != segment.fileOffset + offset) {
    throw FormatError(name + " lies elsewhere in the file than in memory");
  }
  const uint32_t needed = section.hasInstructions() ? kRead | kExecute : kRead;
  if ((segment.protection & needed) != needed) {
    throw FormatError(name + (section.hasInstructions() ? " can't be run" : " can't be read"));
  }
}

void checkLayout(std::vector<SegmentCommand> segments, size_t headerEnd) {
  checkOverlap(segments, &SegmentCommand::address, &SegmentCommand::memorySize, "memory");
  checkOverlap(segments, &SegmentCommand::fileOffset, &SegmentCommand::fileSize, "the file");
  sortBy(segments, &SegmentCommand::address);
  const SegmentCommand& first = segments.front();
  if (first.fileOffset != 0 || first.fileSize < headerEnd) {
    throw FormatError("malformed: its first segment doesn't begin with the file's header");
  }
}

void checkStreams(Bytes file, const std::vector<SegmentCommand>& segments, const DyldInfoCommand& info) {
  const auto linkedit = std::find_if(segments.begin(), segments.end(), [](const SegmentCommand& segment) {
    return fixedName(segment.name) == "__LINKEDIT";
  });
  if (linkedit == segments.end()) throw FormatError("malformed: it has no segment __LINKEDIT");
  Stream streams[] = {{info.rebaseOffset, info.rebaseSize},
                      {info.bindOffset, info.bindSize},
                      {info.weakBindOffset, info.weakBindSize},
                      {info.lazyBindOffset, info.lazyBindSize},
                      {info.exportOffset, info.exportSize}};
  std::sort(std::begin(streams), std::end(streams),
            [](const Stream& a, const Stream& b) { return a.offset < b.offset; });
  uint32_t end = linkedit->fileOffset;
  for (const Stream& stream : streams) {
    if (stream.size == 0) continue;
    if (stream.offset < end || stream.size > linkedit->fileOffset + linkedit->fileSize - stream.offset) {
      throw FormatError("malformed: its tables for the loader overlap, or lie outside of __LINKEDIT");
    }
    if (!isPadding(file.slice(end, stream.offset - end))) {
      throw FormatError("malformed: there is more in its tables for the loader than it says");
    }
    end = stream.offset + stream.size;
  }
}

}  // namespace macho
