#include "dates.h"

#include "host/services.h"

Owned<CFDateRef> RBDate2CFDate(REALobject date) {
  if (!date) return {};
  const char* const names[] = {"Year", "Month", "Day", "Hour", "Minute", "Second"};
  int32_t fields[6] = {};
  for (int i = 0; i < 6; ++i) {
    if (!REALGetPropValueInt32(date, names[i], &fields[i])) return {};
  }
  CFGregorianDate gregorian;
  gregorian.year = fields[0];
  gregorian.month = static_cast<SInt8>(fields[1]);
  gregorian.day = static_cast<SInt8>(fields[2]);
  gregorian.hour = static_cast<SInt8>(fields[3]);
  gregorian.minute = static_cast<SInt8>(fields[4]);
  gregorian.second = fields[5];
  return adopt(CFDateCreate(kCFAllocatorDefault, CFGregorianDateGetAbsoluteTime(gregorian, nullptr)));
}

Owned<REALobject> CFDate2RBDate(CFDateRef value) {
  const CFGregorianDate gregorian = CFAbsoluteTimeGetGregorianDate(CFDateGetAbsoluteTime(value), nullptr);
  auto date = adopt(REALnewInstance("Date"));
  if (!date) return {};
  REALSetPropValueInt32(date.get(), "Year", gregorian.year);
  REALSetPropValueInt32(date.get(), "Month", gregorian.month);
  REALSetPropValueInt32(date.get(), "Day", gregorian.day);
  REALSetPropValueInt32(date.get(), "Hour", gregorian.hour);
  REALSetPropValueInt32(date.get(), "Minute", gregorian.minute);
  REALSetPropValueInt32(date.get(), "Second", static_cast<int32_t>(gregorian.second));
  return date;
}
