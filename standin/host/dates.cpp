#include "standin/host/host.h"
#include "standin/host/objects.h"
#include "standin/host/own_classes.h"

namespace standin::host {
namespace {

// Not the time of the day: a field that the plug-in forgets to set is the same in every run, and is no field
// of a date that a test would choose.
constexpr DateFields freshDate{1987, 6, 5, 4, 3, 2};

void setFields(HostObject& object, const DateFields& fields) {
  object.own["year"] = fields.year;
  object.own["month"] = fields.month;
  object.own["day"] = fields.day;
  object.own["hour"] = fields.hour;
  object.own["minute"] = fields.minute;
  object.own["second"] = fields.second;
}

}  // namespace

HostObject* makeDate(const Class& cls, Side owner) {
  auto* const object = new HostObject(cls, owner);
  setFields(*object, freshDate);
  return object;
}

Value date(int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute, int32_t second) {
  const Value made = newInstance("Date");
  setFields(instanceIn(made, "date fields for"), {year, month, day, hour, minute, second});
  return made;
}

DateFields fields(const Value& date) {
  const HostObject& object = instanceIn(date, "date fields asked of");
  if (!isDate(object)) throw CallError("not a Date but " + date.describe());
  const auto field = [&object](const char* name) {
    return static_cast<int32_t>(object.own.at(name).integer());
  };
  return {field("year"), field("month"), field("day"), field("hour"), field("minute"), field("second")};
}

}  // namespace standin::host
