// One check per file of observed results: does the row again and compares.
#pragma once

#include <string>
#include <vector>

#include "tests/standin/corefoundation/vectors/table.h"
#include "tests/support/owned.h"

struct Check {
  const char* file;
  std::vector<std::string> columns;
  // Empty when the row agrees, else what came out instead.
  std::string (*run)(const Row& row);
};

std::vector<Check> stringChecks();
std::vector<Check> numberChecks();
std::vector<Check> dateChecks();
std::vector<Check> urlChecks();

// "name: got X" when the two differ.
inline std::string difference(const std::string& name, const std::string& got, const std::string& expected) {
  return got == expected ? std::string() : name + ": got " + got + "; ";
}
