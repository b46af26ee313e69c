// One Core Foundation value for each row of the table by which they become host values.
#pragma once

#include <iosfwd>

#include "tests/plugin/bridge/fixture.h"

enum class Treatment {
  native,   // becomes one of the host's own values
  plain,    // becomes a wrapper of its class, whatever that class's instances say of themselves
  checked,  // becomes a wrapper of its class or of CFObjectZNK, if the instance says that it is one
  shadowed  // is converted natively by an earlier row, whatever classes there are
};

struct Row {
  int number;
  Treatment treatment;
  const char* type;       // that the row tests for; null for the last row, which takes any other
  const char* className;  // that the row names; null for values that need no class
  const char* outcome;    // of native and shadowed rows: what host code sees, as host::Value describes it
  CFOwner (*make)();
};
void PrintTo(const Row& row, std::ostream* out);

const std::vector<Row>& rows();
std::vector<Row> rowsOf(Treatment treatment);
