#include "standin/coreservices/store/file_state.h"

namespace standin::metadata {
namespace {

constexpr uint64_t kSecond = 1'000'000'000;      // in nanoseconds
constexpr uint64_t kLongestTick = 20'000'000;    // of the system's clock
constexpr uint64_t kCoarsestTick = 2 * kSecond;  // of file systems that keep no fractions of seconds
constexpr uint64_t kFuture = uint64_t{1} << 63;

uint64_t nanoseconds(const statx_timestamp& time) {
  return static_cast<uint64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

FileState stateOf(const struct statx& info) {
  return {uint64_t{info.stx_dev_major} << 32 | info.stx_dev_minor, info.stx_ino, info.stx_size,
          nanoseconds(info.stx_mtime), nanoseconds(info.stx_ctime)};
}

bool isSettled(const FileState& file, int64_t now) {
  const uint64_t age = static_cast<uint64_t>(now) - file.changed;
  return age < kFuture && age > (file.changed % kSecond == 0 ? kCoarsestTick : kLongestTick);
}

}  // namespace standin::metadata
