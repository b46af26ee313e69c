#include "standin/corefoundation/members.h"

#include <bit>
#include <cstdlib>

namespace cf {
namespace {

constexpr CFIndex kMostValues = 1 << 25;

const Members& membersOf(CFTypeRef cf) {
  return *static_cast<const Members*>(static_cast<const Header*>(cf));
}

// The place of `value`, or the free place where it belongs. There is always a free one.
Member& place(const Members& members, const void* value, CFHashCode hash, const char* call) {
  const uint32_t mask = members.places - 1;
  for (uint32_t i = (hash ^ (hash >> 16)) & mask;; i = (i + 1) & mask) {
    Member& member = members.table[i];
    if (member.times == 0) return member;
    if (member.hash == hash && equalValues(members.rules, member.value, value, call)) return member;
  }
}

CFHashCode checkedHash(const Members& members, const void* value, const char* call) {
  if (value == nullptr && members.rules == &objectRules) misuse(call, "a null value among CFType values");
  return hashValue(members.rules, value, call);
}

}  // namespace

bool fill(Members& members, const void* const* values, CFIndex count, const ValueRules& rules,
          const char* call) {
  const uint32_t places = std::bit_ceil(static_cast<uint32_t>(count) * 3 / 2 + 1);
  members.rules = holdRules(rules);
  members.table = static_cast<Member*>(std::calloc(places, sizeof(Member)));
  if (members.rules == nullptr || members.table == nullptr) return false;
  members.places = places;
  for (CFIndex i = 0; i < count; ++i) {
    const CFHashCode hash = checkedHash(members, values[i], call);
    Member& member = place(members, values[i], hash, call);
    if (member.times == 0) {
      member = {takeValue(members.rules, values[i], call), hash, 0};
      ++members.distinct;
    }
    ++member.times;
    ++members.total;
  }
  return true;
}

uint32_t timesOf(const Members& members, const void* value, const char* call) {
  return place(members, value, checkedHash(members, value, call), call).times;
}

void checkValues(const void* const* values, CFIndex count, const char* call) {
  if (count < 0 || count > kMostValues) misuse(call, "an impossible number of values");
  if (count > 0 && values == nullptr) misuse(call, "null values with a number");
}

void finalizeMembers(CFTypeRef cf) {
  const Members& members = membersOf(cf);
  for (uint32_t i = 0; i < members.places; ++i) {
    if (members.table[i].times != 0) giveUpValue(members.rules, members.table[i].value, "CFRelease");
  }
  std::free(members.table);
  if (members.rules) dropRules(members.rules);
}

Boolean equalMembers(CFTypeRef x, CFTypeRef y) {
  const Members& a = membersOf(x);
  const Members& b = membersOf(y);
  if (a.distinct != b.distinct || a.rules->equal != b.rules->equal) return false;
  for (uint32_t i = 0; i < a.places; ++i) {
    const Member& member = a.table[i];
    if (member.times != 0 && place(b, member.value, member.hash, "CFEqual").times != member.times) {
      return false;
    }
  }
  return true;
}

CFHashCode hashMembers(CFTypeRef cf) {
  return membersOf(cf).distinct;
}

}  // namespace cf
