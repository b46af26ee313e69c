#include "standin/coreservices/media/media_attributes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>

namespace standin::metadata {
namespace {

// Of a value: its attribute, which of the alternatives of OwnedValue it is, how many bytes follow, and these.
struct Header {
  FileAttribute attribute;
  uint8_t alternative;
  uint16_t unused;
  uint32_t length;
};

template <class Alternative>
Alternative plainValue(std::string_view bytes) {
  Alternative value{};
  std::memcpy(&value, bytes.data(), std::min(bytes.size(), sizeof value));
  return value;
}

// What lies beyond all dates, or is no number, stays as it is.
Date dateOf(ClockTime time) {
  constexpr double kBeyondAllDates = 1e15;
  if (!(std::abs(time.seconds) < kBeyondAllDates)) return {time.seconds};
  const double whole = std::floor(time.seconds);
  const int64_t shown = static_cast<int64_t>(whole) + kFrom1970To2001;
  return {static_cast<double>(timeOfClock(shown) - kFrom1970To2001) + (time.seconds - whole)};
}

Value valueOf(size_t alternative, std::string_view bytes) {
  switch (alternative) {
    case 0:
      return plainValue<uint8_t>(bytes) != 0;
    case 1:
      return plainValue<int64_t>(bytes);
    case 2:
      return plainValue<double>(bytes);
    case 3:
      return plainValue<Date>(bytes);
    case 4:
      return dateOf(plainValue<ClockTime>(bytes));
    default:
      return bytes;
  }
}

}  // namespace

std::string encodeAttributes(const MediaAttributes& attributes) {
  std::string bytes;
  for (const auto& each : attributes) {
    const auto append = [&](const auto& value) {
      const char* data = reinterpret_cast<const char*>(&value);
      size_t length = sizeof value;
      if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::string>) {
        data = value.data();
        length = value.size();
      }
      const Header header{each.first, static_cast<uint8_t>(each.second.index()), 0,
                          static_cast<uint32_t>(length)};
      bytes.append(reinterpret_cast<const char*>(&header), sizeof header);
      bytes.append(data, length);
    };
    std::visit(append, each.second);
  }
  return bytes;
}

void decodeValues(std::string_view bytes, FileAttribute attribute, std::vector<Value>& values) {
  Header header;
  while (bytes.size() >= sizeof header) {
    std::memcpy(&header, bytes.data(), sizeof header);
    bytes.remove_prefix(sizeof header);
    if (header.length > bytes.size()) return;
    if (header.attribute == attribute) {
      values.push_back(valueOf(header.alternative, bytes.substr(0, header.length)));
    }
    bytes.remove_prefix(header.length);
  }
}

}  // namespace standin::metadata
