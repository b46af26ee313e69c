// All that host code can do with the plug-in: as one script, and in scenarios that are short enough to be
// played once for every call in them.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/plugin/sweeps/answers.h"

// Uses every class and the global method, in a folder that is indexed and holds the files f1 and f2 of 3
// bytes. The topics are the same ones in the same order whatever fails.
Answers useEverything(const std::string& folder);

struct Scenario {
  const char* name;  // in the names of tests
  void (*use)(const std::string& folder, Answers& answers);
  bool hasTag = false;  // a destructor gives something back to the host
};

inline void PrintTo(const Scenario& scenario, std::ostream* out) {
  *out << scenario.name;
}

// Each with the groundwork that it needs and no more. Together they give every answer that everything gives,
// and make every call. In the long tier everything is there as one script, too, without and with the tag.
const std::vector<Scenario>& scenarios();

Answers play(const Scenario& scenario, const std::string& folder);
