// Permissions count for people other than the administrator only: while one of these lives, the process is
// such a person, whom the folder belongs to.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include "scratch_folder.h"

class OrdinaryUser {
 public:
  explicit OrdinaryUser(const ScratchFolder& folder) {
    constexpr uid_t kNobody = 65534;
    if (::geteuid() != 0) return;
    isNobody_ = ::chown(folder.path().c_str(), kNobody, kNobody) == 0 && ::seteuid(kNobody) == 0;
  }
  ~OrdinaryUser() {
    if (isNobody_ && ::seteuid(0) != 0) ADD_FAILURE() << "can't become the administrator again";
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;

 private:
  bool isNobody_ = false;
};
