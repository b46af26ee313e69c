// Which folders a program looks into.
#pragma once

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <map>
#include <string>
#include <vector>

class OpenedFolders {
 public:
  // Of these, from now on.
  explicit OpenedFolders(const std::vector<std::string>& folders)
      : descriptor_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    for (const std::string& folder : folders) {
      const int watch = inotify_add_watch(descriptor_, folder.c_str(), IN_OPEN | IN_ONESHOT);
      EXPECT_GE(watch, 0) << folder;
      names_[watch] = folder;
    }
  }
  ~OpenedFolders() { close(descriptor_); }
  OpenedFolders(const OpenedFolders&) = delete;
  OpenedFolders& operator=(const OpenedFolders&) = delete;

  // In the order in which they were opened, each once. To be asked once.
  std::vector<std::string> names() const {
    std::vector<std::string> opened;
    alignas(inotify_event) char buffer[64 * 1024];
    for (ssize_t size; (size = read(descriptor_, buffer, sizeof buffer)) > 0;) {
      for (ssize_t offset = 0; offset < size;) {
        const auto& event = *reinterpret_cast<const inotify_event*>(buffer + offset);
        offset += static_cast<ssize_t>(sizeof event + event.len);
        if (event.mask & IN_OPEN) opened.push_back(names_.at(event.wd));
      }
    }
    return opened;
  }

 private:
  const int descriptor_;
  std::map<int, std::string> names_;
};
