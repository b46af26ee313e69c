// Runs a program, and tells what came of it.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "standin/host/interpreter/program.h"

// What it printed, a line each, and how it ended unless that was with status 0: "3:5: what is wrong" for a
// mistake, "CLASS: MESSAGE" and the lines of the stack for an exception, "status 3", or "interrupted".
std::string outputOf(const std::string& program, standin::host::Surroundings surroundings = {});

// The programs of a file in programs/: each with its name, "=== NAME", above it, and behind "--- prints" what
// comes of it.
struct Case {
  std::string name;
  std::string program;
  std::string output;
};
inline std::ostream& operator<<(std::ostream& out, const Case& each) {
  return out << each.name;
}
std::vector<Case> casesIn(const std::string& file);
