// For tests in which a process has to end because it touches memory that isn't there, and for nothing else.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>

#include "tests/support/sanitizers.h"

// The address sanitizer reports the fault, and ends the process itself.
inline bool isMemoryFault(int status) {
  if (underAddressSanitizer()) return !WIFEXITED(status) || WEXITSTATUS(status) != 0;
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
}
inline const char* memoryFaultText() {
  return underAddressSanitizer() ? "SEGV on unknown address" : "";
}

#define EXPECT_MEMORY_FAULT(statement) EXPECT_EXIT(statement, isMemoryFault, memoryFaultText())
