// All that host code can do with the plug-in, for tests that take something away from under it.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "tests/plugin/fixture.h"

// The answer to one use of the plug-in.
struct Answer {
  std::string topic;
  std::string value;  // "neutral" where it is nil, 0, false or empty
  Exceptions raised;
  // Of this use and of those that it builds on: what was called, and whether such a call was made to fail.
  std::set<std::string> calls;
  bool failed = false;

  std::string text() const;  // "TOPIC: VALUE", and behind it what was raised
};
std::vector<std::string> textsOf(const std::vector<Answer>& answers);

// Uses every class and the global method, in a folder that is indexed and holds the files f1 and f2 of 3
// bytes. The topics are the same ones in the same order whatever fails.
std::vector<Answer> useEverything(const std::string& folder);

// The same without a tag, so that no destructor gives anything back to the host.
std::vector<Answer> useMethods(const std::string& folder);

// Whether this is what is left of the complete answer where something could not be had: the same or the
// neutral value or one that the platform has for failures, or a list with fewer elements or neutral ones; and
// no exceptions but those that say that there is no query, no item or no such place in an array or
// key in a dictionary.
bool isDegraded(const Answer& answer, const Answer& complete);
