// Host strings: bytes, their encoding, and the record that old plug-in code looks into.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "standin/host/things/handles.h"

namespace standin::host {

// The record's words: the host's mark, a buffer whose text begins one byte in, unused, the byte length,
// unused. On hosts below 2012.0 buffer and length are right while the plug-in holds a lock on the string; at
// all other times, and on later hosts always, the buffer can't be read and the length is wrong.
class HostString : public Counted {
 public:
  using OfKind = HostString;
  static constexpr ThingKind kThing = ThingKind::string;

  HostString(std::string bytes, uint32_t encoding, Side owner);
  std::string describe() const override { return "string"; }
  BlockName blockName() const override { return {"string"}; }

  // The plug-in took or gave back a lock, as against a reference that came with a result.
  void locked();
  void unlocked();

  const std::string bytes;  // ends with a zero byte, as every std::string does
  uint32_t encoding;

 private:
  void hide();

  int locks_ = 0;
  std::vector<char> buffer_;
};

// Ends the process when the handle is null, freed or no string's.
HostString& stringAt(StringHandle handle);
HostString& stringOf(const Ref& reference);  // of one that is not null
HostString& newHostString(std::string bytes, uint32_t encoding, Side owner);
StringHandle newString(std::string bytes, uint32_t encoding, Side owner);

}  // namespace standin::host
