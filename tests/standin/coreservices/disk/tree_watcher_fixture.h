// A watched scratch folder, and changes as texts: "touched name", "gone folder/", "rescan ./".
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "standin/coreservices/disk/tree_watcher.h"
#include "tests/support/scratch_folder.h"

namespace standin::metadata {

class Watched : public testing::Test {
 protected:
  // Paths relative to the scratch folder, which is "."; folders end with a slash.
  std::vector<std::string> texts(const std::vector<TreeChange>& changes) const {
    std::vector<std::string> texts;
    for (const TreeChange& change : changes) {
      const char* const kinds[] = {"touched ", "gone ", "rescan "};
      std::string path = scratch.within({change.path})[0];
      if (path == scratch.path()) path = ".";
      texts.push_back(kinds[change.kind] + path + (change.folder ? "/" : ""));
    }
    return texts;
  }
  std::vector<std::string> take(TreeWatcher& watcher) const { return texts(watcher.take()); }

  void append(std::string_view name) const { std::ofstream(scratch.at(name), std::ios::app) << "more"; }
  void rename(std::string_view from, std::string_view to) const {
    if (std::rename(scratch.at(from).c_str(), scratch.at(to).c_str()) != 0) {
      throw std::runtime_error("can't rename " + std::string(from));
    }
  }
  void remove(std::string_view name) const { std::filesystem::remove_all(scratch.at(name)); }

  static bool isReadable(const TreeWatcher& watcher, int milliseconds = 0) {
    pollfd poll{watcher.descriptor(), POLLIN, 0};
    return ::poll(&poll, 1, milliseconds) == 1;
  }
  // As the kernel counts them.
  static size_t watchesOf(const TreeWatcher& watcher) {
    std::ifstream stream("/proc/self/fdinfo/" + std::to_string(watcher.descriptor()));
    size_t count = 0;
    for (std::string line; std::getline(stream, line);) count += line.starts_with("inotify ");
    return count;
  }

  static constexpr int kSkipped = 77;

  // Runs it in a process of its own, which has limits and mounted folders of its own. Answers whether it
  // could.
  static bool runApart(const std::function<void()>& test) {
    const pid_t child = ::fork();
    if (child == 0) {
      const std::string user = std::to_string(::geteuid());
      const std::string group = std::to_string(::getegid());
      if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) ::_exit(kSkipped);
      std::ofstream("/proc/self/setgroups") << "deny";
      std::ofstream("/proc/self/uid_map") << "0 " + user + " 1";
      std::ofstream("/proc/self/gid_map") << "0 " + group + " 1";
      try {
        test();
      } catch (const std::exception& exception) {
        ADD_FAILURE() << exception.what();
      }
      std::cout.flush();
      ::_exit(testing::Test::HasFailure() ? 1 : testing::Test::IsSkipped() ? kSkipped : 0);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    const int code = WEXITSTATUS(status);
    EXPECT_TRUE(code == 0 || code == kSkipped) << "see above";
    return code != kSkipped;
  }

  const ScratchFolder scratch;
};

}  // namespace standin::metadata
