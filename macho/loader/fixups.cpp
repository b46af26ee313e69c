#include "macho/loader/fixups.h"

namespace macho {
namespace {

constexpr uint32_t kWord = 4;

[[noreturn]] void unknown(const char* stream, uint8_t byte) {
  throw FormatError(std::string("malformed: unknown opcode ") + std::to_string(byte) + " among its " +
                    stream);
}

FixupKind kindOf(const char* stream, uint8_t type, FixupKind last) {
  if (type < kPointerType || type > static_cast<uint8_t>(last)) {
    throw FormatError("malformed: unknown type " + std::to_string(type) + " among its " + stream);
  }
  return FixupKind{type};
}

// An end may be left out. What follows it is padding: anything else was meant to be read.
// read.
void requireEnd(const char* stream, Cursor cursor) {
  while (!cursor.atEnd()) {
    if (cursor.next<uint8_t>() != 0)
      throw FormatError(std::string("malformed: its ") + stream + " go on after their end");
  }
}

class RebaseReader {
 public:
  RebaseReader(Bytes stream, uint32_t limit, const std::function<void(FixupPlace)>& visit)
      : cursor_(stream), limit_(limit), visit_(visit) {}

  void read() {
    while (!cursor_.atEnd()) {
      const auto byte = cursor_.next<uint8_t>();
      if ((byte & kOpcodeMask) == rebase::kDone) return requireEnd("rebases", cursor_);
      apply(byte & kOpcodeMask, byte & kImmediateMask);
    }
  }

 private:
  void apply(uint8_t opcode, uint8_t immediate) {
    switch (opcode) {
      case rebase::kSetType:
        // A distance within the image is the same wherever it lies, so nobody writes kTextRelative here.
        place_.kind = kindOf("rebases", immediate, FixupKind::kTextAbsolute);
        hasType_ = true;
        return;
      case rebase::kSetSegmentAndOffset:
        place_ = {immediate, cursor_.uleb(), place_.kind};
        hasPlace_ = true;
        return;
      case rebase::kAddAddress:
        place_.offset += cursor_.uleb();
        return;
      case rebase::kAddAddressScaled:
        place_.offset += immediate * kWord;
        return;
      case rebase::kDoTimes:
        return repeat(immediate, 0);
      case rebase::kDoULEBTimes:
        return repeat(cursor_.uleb(), 0);
      case rebase::kDoAddAddress:
        return repeat(1, cursor_.uleb());
      case rebase::kDoULEBTimesSkipping: {
        const uint32_t count = cursor_.uleb();
        return repeat(count, cursor_.uleb());
      }
    }
    unknown("rebases", opcode);
  }

  void repeat(uint32_t count, uint32_t skip) {
    if (!hasType_ || !hasPlace_) throw FormatError("malformed: its rebases begin in the middle");
    if (count > limit_) throw FormatError("malformed: more rebases than the image has room for");
    limit_ -= count;
    for (; count; --count) {
      visit_(place_);
      place_.offset += kWord + skip;
    }
  }

  Cursor cursor_;
  uint32_t limit_;
  const std::function<void(FixupPlace)>& visit_;
  FixupPlace place_ = {};
  bool hasType_ = false, hasPlace_ = false;
};

class BindReader {
 public:
  BindReader(Bytes stream, BindStream kind, uint32_t limit, const std::function<void(const Bind&)>& visit)
      : cursor_(stream), kind_(kind), limit_(limit), visit_(visit), hasType_(kind == BindStream::kLazy) {}

  void read() {
    while (!cursor_.atEnd()) {
      const auto byte = cursor_.next<uint8_t>();
      if ((byte & kOpcodeMask) == bind::kDone) {
        // Each lazy bind is a small stream of its own, as dyld reads them one at a time.
        if (kind_ == BindStream::kOrdinary) return requireEnd("binds", cursor_);
        bind_ = {};
        hasPlace_ = false;
        continue;
      }
      apply(byte & kOpcodeMask, byte & kImmediateMask);
    }
  }

 private:
  void apply(uint8_t opcode, uint8_t immediate) {
    switch (opcode) {
      case bind::kSetOrdinal:
        bind_.library = immediate;
        return;
      case bind::kSetOrdinalULEB:
        bind_.library = static_cast<int32_t>(cursor_.uleb());
        return;
      // Special ordinals are small negative numbers; the opcode's bits are their sign extension.
      case bind::kSetSpecialOrdinal:
        bind_.library = immediate ? immediate - 16 : 0;
        return;
      case bind::kSetSymbol:
        bind_.weak = immediate & bind::kWeakImport;
        bind_.symbol = cursor_.text();
        return;
      case bind::kSetType:
        bind_.place.kind = kindOf("binds", immediate, FixupKind::kTextRelative);
        hasType_ = true;
        return;
      case bind::kSetAddend:
        bind_.addend = cursor_.sleb();
        return;
      case bind::kSetSegmentAndOffset:
        bind_.place = {immediate, cursor_.uleb(), bind_.place.kind};
        hasPlace_ = true;
        return;
      case bind::kAddAddress:
        bind_.place.offset += cursor_.uleb();
        return;
      case bind::kDo:
        return repeat(1, 0);
      case bind::kDoAddAddress:
        return repeat(1, cursor_.uleb());
      case bind::kDoAddAddressScaled:
        return repeat(1, immediate * kWord);
      case bind::kDoULEBTimesSkipping: {
        const uint32_t count = cursor_.uleb();
        return repeat(count, cursor_.uleb());
      }
    }
    unknown("binds", opcode);
  }

  void repeat(uint32_t count, uint32_t skip) {
    if (!hasType_ || !hasPlace_ || bind_.symbol.empty()) {
      throw FormatError("malformed: its binds begin in the middle");
    }
    if (count > limit_) throw FormatError("malformed: more binds than the image has room for");
    limit_ -= count;
    for (; count; --count) {
      visit_(bind_);
      bind_.place.offset += kWord + skip;
    }
  }

  Cursor cursor_;
  BindStream kind_;
  uint32_t limit_;
  const std::function<void(const Bind&)>& visit_;
  Bind bind_ = {};
  bool hasType_, hasPlace_ = false;  // the type of a lazy bind needn't be said: it is a pointer
};

}  // namespace

void readRebases(Bytes stream, uint32_t limit, const std::function<void(FixupPlace)>& visit) {
  RebaseReader(stream, limit, visit).read();
}

void readBinds(Bytes stream, BindStream kind, uint32_t limit, const std::function<void(const Bind&)>& visit) {
  BindReader(stream, kind, limit, visit).read();
}

}  // namespace macho
