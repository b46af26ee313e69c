// The order of text by the rules of languages: ICU's collators. Their library is loaded when text is first
// compared so, as few programs ever do: looking up its names is a tenth of the time that a small search
// takes.
#pragma once

#include <unicode/ucol.h>

#include "standin/gate/gate.h"

namespace standin {

// ICU's functions, for whoever would have called them; <unicode/ucol.h> says what they take and return.
struct Collation {
  decltype(&ucol_open) open;
  decltype(&ucol_close) close;
  decltype(&ucol_setAttribute) setAttribute;
  decltype(&ucol_setStrength) setStrength;
  decltype(&ucol_strcoll) compare;
  decltype(&ucol_getSortKey) sortKey;
};

// Without memory for the library the program's new-handler is called; without a handler the process ends with
// a message.
STANDIN_API const Collation& collation();

}  // namespace standin
