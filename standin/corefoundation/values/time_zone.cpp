// Time zones of a fixed distance from GMT: places with rules of their own are not known here.
#include "standin/corefoundation/values/time_zone.h"

#include <cmath>

#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/runtime/classes.h"
#include "standin/corefoundation/runtime/object.h"

struct __CFTimeZone : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kTimeZoneType;
  CFTimeInterval offset;
};

namespace cf {
namespace {

constexpr CFTimeInterval kFarthest = 18 * 3600;
constexpr CFTimeInterval kSecondsPerMinute = 60;

Boolean equalTimeZones(CFTypeRef a, CFTypeRef b) {
  return static_cast<CFTimeZoneRef>(a)->offset == static_cast<CFTimeZoneRef>(b)->offset;
}

CFHashCode hashTimeZone(CFTypeRef cf) {
  return hashDouble(static_cast<CFTimeZoneRef>(cf)->offset);
}

}  // namespace

const CFRuntimeClass kTimeZoneClass = {
    .className = "CFTimeZone", .equal = equalTimeZones, .hash = hashTimeZone};

CFTimeInterval secondsFromGMT(CFTimeZoneRef zone, const char* call) {
  return checked(zone, call)->offset;
}

}  // namespace cf

using standin::Gate;

CFTypeID CFTimeZoneGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kTimeZoneType;
}

// Rounded to whole minutes. Null for a distance that no place on earth has.
CFTimeZoneRef CFTimeZoneCreateWithTimeIntervalFromGMT(CFAllocatorRef allocator, CFTimeInterval ti) {
  const Gate gate(__func__);
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  if (!(std::fabs(ti) <= cf::kFarthest)) return nullptr;
  __CFTimeZone* const zone = cf::makeObject<__CFTimeZone>();
  if (zone) zone->offset = std::round(ti / cf::kSecondsPerMinute) * cf::kSecondsPerMinute;
  return zone;
}

CFTimeInterval CFTimeZoneGetSecondsFromGMT(CFTimeZoneRef tz, CFAbsoluteTime) {
  const Gate gate(__func__);
  const CFTimeInterval offset = cf::secondsFromGMT(tz, __func__);
  return gate.fails() ? 0 : offset;
}
