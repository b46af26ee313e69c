// What the content of a file says about itself, as attributes, and the bytes that they are kept as.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "standin/coreservices/attributes/attributes.h"

namespace standin::metadata {

// The time that clocks showed, wherever that was: which date it is depends on this process's time zone.
struct ClockTime {
  double seconds;  // since 2001-01-01 00:00:00
  bool operator==(const ClockTime&) const = default;
};

// A value that keeps its own text.
using OwnedValue = std::variant<bool, int64_t, double, Date, ClockTime, std::string>;
using MediaAttributes = std::vector<std::pair<FileAttribute, OwnedValue>>;

// The attributes as bytes that mean the same to every process of this version of the program.
std::string encodeAttributes(const MediaAttributes& attributes);

// Appends the attribute's values, in their order; text borrows from the bytes, which encodeAttributes() made.
// Of other bytes, what can be made of them.
void decodeValues(std::string_view bytes, FileAttribute attribute, std::vector<Value>& values);

}  // namespace standin::metadata
