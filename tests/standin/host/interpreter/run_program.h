// Runs a program, and tells what came of it.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "standin/host/interpreter/program.h"

// What it printed, a line each, and how it ended unless that was with status 0: "3:5: what is wrong" for a
// mistake, "CLASS: MESSAGE" and the lines of the stack for an exception, "status 3", or "interrupted".
std::string outputOf(const std::string& program, standin::host::Surroundings surroundings = {});

struct Row {
  const char* name;
  const char* program;
  const char* output;
};
inline std::ostream& operator<<(std::ostream& out, const Row& row) {
  return out << row.name;
}
