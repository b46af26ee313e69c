// Permissions count for people other than the administrator only: while one of these lives, the process has
// none of the administrator's rights over files of others, nor over its own that it may not read.
#pragma once

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

class OrdinaryUser {
 public:
  OrdinaryUser() {
    if (::syscall(SYS_capget, &header_, before_) != 0) return;
    __user_cap_data_struct fewer[2] = {before_[0], before_[1]};
    fewer[0].effective &= ~(1u << CAP_DAC_OVERRIDE | 1u << CAP_DAC_READ_SEARCH);
    changed_ = ::syscall(SYS_capset, &header_, fewer) == 0;
  }
  ~OrdinaryUser() {
    if (changed_ && ::syscall(SYS_capset, &header_, before_) != 0)
      ADD_FAILURE() << "rights can't be taken back";
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;

 private:
  __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct before_[2]{};
  bool changed_ = false;
};
