// What must not happen to the test's own process, or what takes another one.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <exception>
#include <functional>
#include <iostream>

// Does it in a copy of this process, which ends without a look back: nothing that lives here is destroyed
// there.
inline pid_t startForked(const std::function<void()>& work) {
  std::cout.flush();
  const pid_t child = ::fork();
  if (child != 0) return child;
  try {
    work();
  } catch (const std::exception& error) {
    ADD_FAILURE() << "exception: " << error.what();
  }
  std::cout.flush();
  ::_exit(testing::Test::HasFailure() ? 1 : 0);
}

// Succeeds when nothing failed there.
inline testing::AssertionResult endsWell(pid_t child) {
  int status = -1;
  if (::waitpid(child, &status, 0) != child) return testing::AssertionFailure() << "there is no process";
  if (status == 0) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "the process ended with status " << status << "; see above";
}

inline testing::AssertionResult succeedsForked(const std::function<void()>& work) {
  return endsWell(startForked(work));
}
