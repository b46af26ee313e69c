// Values as a property list for people.
#pragma once

#include <string>

#include "standin/host/host.h"

namespace shotlight {

// "text", 12, true, 2011-03-05T06:42:10Z, <00ff>, (none); a list in ( ) and a dictionary in { }, an element a
// line, indented by two spaces for each level from `level` on. Text is escaped so that a terminal shows it as
// it is (standin::shownText), with \" and \\.
std::string propertyList(const standin::host::Value& value, int level);

}  // namespace shotlight
