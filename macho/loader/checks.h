// Whether what a dylib says of itself can be so: what is relied on later, or would crash when its code runs.
#pragma once

#include <cstdint>
#include <vector>

#include "macho/format/bytes.h"
#include "macho/format/format.h"

namespace macho {

// All throw FormatError where it can't be.

// By itself: its protection, its contents inside the file.
void checkSegment(Bytes file, const SegmentCommand& segment);
// The section lies in the segment, in the file as in memory, and its code can be run there.
void checkSection(const SegmentCommand& segment, const SectionRecord& section);
// Together: nothing overlaps, and the lowest holds the header and the load commands, which end at
// `headerEnd`.
void checkLayout(std::vector<SegmentCommand> segments, size_t headerEnd);
// The streams lie in __LINKEDIT from its beginning, with nothing but padding between them: the rest of one
// whose size is wrong isn't passed over.
void checkStreams(Bytes file, const std::vector<SegmentCommand>& segments, const DyldInfoCommand& info);

}  // namespace macho
