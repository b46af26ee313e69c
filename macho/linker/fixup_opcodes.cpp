#include "macho/linker/fixup_opcodes.h"

#include <algorithm>
#include <tuple>

#include "macho/format/format.h"
#include "macho/linker/leb.h"

namespace macho {
namespace {

constexpr uint8_t kDataSegment = 1;  // its index among the segments
constexpr uint32_t kWord = 4;
constexpr size_t kWidestRow = 8;  // of a table, in rebases; wider ones gain little

void appendPlace(std::vector<uint8_t>& bytes, uint8_t opcode, uint32_t offset) {
  bytes.push_back(opcode | kDataSegment);
  appendULEB(bytes, offset);
}

// Finds, from the last rebase to the first, the shortest opcodes from each one to the end. Every step starts
// with dyld's address at the rebase that it is about, and leaves it at the next one.
class RebaseEncoder {
 public:
  RebaseEncoder(const std::vector<uint32_t>& rebases, uint32_t dataAddress)
      : rebases_(rebases), dataAddress_(dataAddress), best_(rebases.size()) {}

  void appendTo(std::vector<uint8_t>& bytes) {
    for (size_t i = rebases_.size(); i-- > 0;) choose(i);
    for (size_t i = 0; i < rebases_.size(); i = best_[i].next) {
      bytes.insert(bytes.end(), best_[i].opcodes.begin(), best_[i].opcodes.end());
    }
  }

 private:
  struct Step {
    std::vector<uint8_t> opcodes;
    size_t next = 0;  // the rebase behind those that the opcodes do
    size_t cost = 0;  // bytes from here to the end
  };

  void choose(size_t first) {
    considerRuns(first);
    considerOneWithGap(first);
    considerSkippingRuns(first);
    for (size_t width = 2; width <= kWidestRow; ++width) considerTable(first, width);
  }

  // Words side by side, then a step over the gap behind them.
  void considerRuns(size_t first) {
    for (size_t end = first + 1;; ++end) {
      const auto count = static_cast<uint32_t>(end - first);
      std::vector<uint8_t> opcodes;
      if (count <= kImmediateMask) {
        opcodes.push_back(static_cast<uint8_t>(rebase::kDoTimes | count));
      } else {
        opcodes.push_back(rebase::kDoULEBTimes);
        appendULEB(opcodes, count);
      }
      const uint32_t gap = end < rebases_.size() ? rebases_[end] - rebases_[end - 1] - kWord : 0;
      if (gap) appendStep(opcodes, gap);
      consider(first, end, std::move(opcodes));
      if (gap || end == rebases_.size()) return;
    }
  }

  void considerOneWithGap(size_t first) {
    if (first + 1 >= rebases_.size()) return;
    std::vector<uint8_t> opcodes = {rebase::kDoAddAddress};
    appendULEB(opcodes, rebases_[first + 1] - rebases_[first] - kWord);
    consider(first, first + 1, std::move(opcodes));
  }

  // Words at equal distances. The last one of them belongs to what follows, as dyld steps over the distance
  // behind each word.
  void considerSkippingRuns(size_t first) {
    const auto distance = [&](size_t i) { return rebases_[i + 1] - rebases_[i]; };
    for (size_t last = first + 1; last < rebases_.size() && distance(last - 1) == distance(first); ++last) {
      std::vector<uint8_t> opcodes = {rebase::kDoULEBTimesSkipping};
      appendULEB(opcodes, static_cast<uint32_t>(last - first));
      appendULEB(opcodes, distance(first) - kWord);
      consider(first, last, std::move(opcodes));
    }
  }

  // Rows of equal records: column after column, in one go each.
  void considerTable(size_t first, size_t width) {
    if (first + 2 * width > rebases_.size()) return;
    const uint32_t distance = rebases_[first + width] - rebases_[first];
    size_t end = first + width;
    while (end < rebases_.size() && rebases_[end] - rebases_[end - width] == distance) ++end;
    const size_t rows = (end - first) / width;
    if (rows < 2) return;
    end = first + rows * width;
    std::vector<uint8_t> opcodes;
    for (size_t column = 0; column < width; ++column) {
      if (column) appendPlace(opcodes, rebase::kSetSegmentAndOffset, rebases_[first + column] - dataAddress_);
      opcodes.push_back(rebase::kDoULEBTimesSkipping);
      appendULEB(opcodes, static_cast<uint32_t>(rows));
      appendULEB(opcodes, distance - kWord);
    }
    if (end < rebases_.size()) {
      appendPlace(opcodes, rebase::kSetSegmentAndOffset, rebases_[end] - dataAddress_);
    }
    consider(first, end, std::move(opcodes));
  }

  static void appendStep(std::vector<uint8_t>& opcodes, uint32_t gap) {
    if (gap % kWord == 0 && gap / kWord <= kImmediateMask) {
      opcodes.push_back(static_cast<uint8_t>(rebase::kAddAddressScaled | gap / kWord));
    } else {
      opcodes.push_back(rebase::kAddAddress);
      appendULEB(opcodes, gap);
    }
  }

  void consider(size_t first, size_t next, std::vector<uint8_t> opcodes) {
    const size_t cost = opcodes.size() + (next < best_.size() ? best_[next].cost : 0);
    Step& best = best_[first];
    if (best.opcodes.empty() || cost < best.cost) best = {std::move(opcodes), next, cost};
  }

  const std::vector<uint32_t>& rebases_;
  uint32_t dataAddress_;
  std::vector<Step> best_;
};

void appendOrdinal(std::vector<uint8_t>& bytes, uint32_t ordinal) {
  if (ordinal <= kImmediateMask) {
    bytes.push_back(static_cast<uint8_t>(bind::kSetOrdinal | ordinal));
  } else {
    bytes.push_back(bind::kSetOrdinalULEB);
    appendULEB(bytes, ordinal);
  }
}

}  // namespace

std::vector<uint8_t> encodeRebases(const std::vector<uint32_t>& rebases, uint32_t dataAddress) {
  std::vector<uint8_t> bytes;
  if (rebases.empty()) return bytes;
  bytes.push_back(rebase::kSetType | kPointerType);
  appendPlace(bytes, rebase::kSetSegmentAndOffset, rebases.front() - dataAddress);
  RebaseEncoder(rebases, dataAddress).appendTo(bytes);
  bytes.push_back(rebase::kDone);
  return bytes;
}

std::vector<uint8_t> encodeBinds(std::vector<LoadTimeWork::Bind> binds, const std::vector<Import>& imports,
                                 uint32_t dataAddress) {
  std::vector<uint8_t> bytes;
  if (binds.empty()) return bytes;
  const auto order = [&](const LoadTimeWork::Bind& bind) {
    return std::make_tuple(imports[bind.import].library, bind.import, bind.addend, bind.address);
  };
  std::sort(binds.begin(), binds.end(), [&](const auto& a, const auto& b) { return order(a) < order(b); });

  bytes.push_back(bind::kSetType | kPointerType);
  const LoadTimeWork::Bind* previous = nullptr;
  int32_t addend = 0;
  for (const LoadTimeWork::Bind& bind : binds) {
    const Import& import = imports[bind.import];
    if (!previous || imports[previous->import].library != import.library) {
      appendOrdinal(bytes, static_cast<uint32_t>(import.library) + 1);
    }
    if (!previous || previous->import != bind.import) {
      bytes.push_back(bind::kSetSymbol | (import.weak ? bind::kWeakImport : 0));
      appendText(bytes, import.name);
    }
    if (bind.addend != addend) {
      bytes.push_back(bind::kSetAddend);
      appendSLEB(bytes, addend = bind.addend);
    }
    // Behind a bind, dyld's address is that of the next word.
    if (!previous || previous->address + kWord != bind.address) {
      appendPlace(bytes, bind::kSetSegmentAndOffset, bind.address - dataAddress);
    }
    bytes.push_back(bind::kDo);
    previous = &bind;
  }
  bytes.push_back(bind::kDone);
  return bytes;
}

}  // namespace macho
