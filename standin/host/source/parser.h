// Reads the text of a program.
#pragma once

#include <string_view>

#include "standin/host/source/tree.h"

namespace standin::host {

// Throws SourceError for the first mistake. Expressions and statements nest 200 deep at the most, so that
// whoever walks through the tree needs little of the stack.
ProgramText parseProgram(std::string_view source);

}  // namespace standin::host
