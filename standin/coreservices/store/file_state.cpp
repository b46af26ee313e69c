#include "standin/coreservices/store/file_state.h"

namespace standin::metadata {
namespace {

uint64_t nanoseconds(const statx_timestamp& time) {
  return static_cast<uint64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

FileState stateOf(const struct statx& info) {
  return {uint64_t{info.stx_dev_major} << 32 | info.stx_dev_minor, info.stx_ino, info.stx_size,
          nanoseconds(info.stx_mtime), nanoseconds(info.stx_ctime)};
}

}  // namespace standin::metadata
