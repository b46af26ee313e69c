// Dates: six fields, which are properties, and nothing that computes with them.
#pragma once

#include "standin/host/host.h"
#include "standin/host/things/objects.h"

namespace standin::host {

class HostDate : public HostObject {
 public:
  HostDate(const Class& cls, Side owner);
  void setFields(const DateFields& fields);
  DateFields fields() const;
};

bool isDate(const Counted& thing);

}  // namespace standin::host
