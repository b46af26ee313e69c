#include "standin/host/things/dates.h"

#include "standin/host/host.h"

namespace standin::host {
namespace {

// Not the time of the day: a field that the plug-in forgets to set is the same in every run, and is no field
// of a date that a test would choose.
constexpr DateFields kFreshDate{1987, 6, 5, 4, 3, 2};

}  // namespace

HostDate::HostDate(const Class& classOfIt, Side owner) : HostObject(classOfIt, owner) {
  setFields(kFreshDate);
}

void HostDate::setFields(const DateFields& fields) {
  own["year"] = fields.year;
  own["month"] = fields.month;
  own["day"] = fields.day;
  own["hour"] = fields.hour;
  own["minute"] = fields.minute;
  own["second"] = fields.second;
}

DateFields HostDate::fields() const {
  const auto field = [this](const char* name) { return static_cast<int32_t>(own.at(name).integer()); };
  return {field("year"), field("month"), field("day"), field("hour"), field("minute"), field("second")};
}

bool isDate(const Counted& thing) {
  return dynamic_cast<const HostDate*>(&thing) != nullptr;
}

Value date(int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute, int32_t second) {
  const Value made = newInstance("Date");
  instanceAs<HostDate>(made, "date fields for", "a Date").setFields({year, month, day, hour, minute, second});
  return made;
}

DateFields fields(const Value& date) {
  return instanceAs<HostDate>(date, "date fields asked of", "a Date").fields();
}

}  // namespace standin::host
