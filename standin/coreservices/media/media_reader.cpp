#include "standin/coreservices/media/media_reader.h"

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <cstdio>
#include <optional>
#include <set>

#include "standin/coreservices/disk/descriptor.h"
#include "standin/coreservices/media/media_table.h"

namespace standin::metadata {
namespace {

std::vector<std::string> exiftoolArguments() {
  std::vector<std::string> arguments{
      "-j", "-G0", "-charset", "UTF8", "-api", "QuickTimeUTC=1", "-api", "LargeFileSupport=1"};
  std::set<std::string> wanted;
  for (const MediaRow& row : mediaTable()) {
    for (const std::string_view tag : row.tags) {
      if (!tag.empty() && wanted.emplace(tag).second) arguments.push_back("-" + std::string(tag));
    }
  }
  for (const std::string_view tag : kFurtherTags) arguments.push_back("-" + std::string(tag));
  return arguments;
}

// A path that exiftool takes for one argument and the system takes in one call. What isn't such a path is
// reached through the descriptor of the open file.
class PathForExiftool {
 public:
  explicit PathForExiftool(const FileLocation& file) {
    if (file.path.size() < PATH_MAX && file.path.find_first_of("\r\n") == std::string_view::npos) {
      path_ = file.path;
      return;
    }
    descriptor_ = Descriptor(
        ::openat(file.folder, file.pathFromFolder, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!descriptor_) return;
    path_ = "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(descriptor_.get());
  }

  const std::string& get() const { return path_; }  // empty when there is none

 private:
  std::string path_;
  Descriptor descriptor_;
};

}  // namespace

MediaReader::MediaReader(const Options& options)
    : exiftool_({options.program, exiftoolArguments(), options.timeout, options.complain}),
      filesKept_(options.filesKept) {}

MediaReader::State MediaReader::stateOf(const struct statx& info) {
  return {info.stx_dev_major,    info.stx_dev_minor,     info.stx_ino,          info.stx_size,
          info.stx_mtime.tv_sec, info.stx_mtime.tv_nsec, info.stx_ctime.tv_sec, info.stx_ctime.tv_nsec};
}

std::shared_ptr<const MediaAttributes> MediaReader::ask(const std::string& path) {
  std::shared_ptr<const MediaAttributes> attributes;
  exiftool_.ask(path, [&](std::string_view answer) {
    const std::optional<MediaTags> tags = parseMediaTags(answer);
    if (tags) attributes = std::make_shared<MediaAttributes>(attributesOf(*tags));
    return tags.has_value();
  });
  return attributes ? attributes : std::make_shared<MediaAttributes>();
}

std::shared_ptr<const MediaAttributes> MediaReader::readAnew(const FileLocation& file) {
  const PathForExiftool path(file);
  if (path.get().empty()) return std::make_shared<MediaAttributes>();
  ++filesRead_;
  return ask(path.get());
}

std::shared_ptr<const MediaAttributes> MediaReader::read(const FileLocation& file) {
  const State state = stateOf(file.info);
  if (const auto found = byPath_.find(file.path); found != byPath_.end()) {
    const auto kept = found->second;
    kept_.splice(kept_.begin(), kept_, kept);
    if (kept->state != state) {
      kept->attributes = readAnew(file);
      kept->state = state;
    }
    return kept->attributes;
  }
  kept_.push_front({std::string(file.path), state, readAnew(file)});
  byPath_[kept_.front().path] = kept_.begin();
  const auto attributes = kept_.front().attributes;
  if (kept_.size() > filesKept_) {
    byPath_.erase(kept_.back().path);
    kept_.pop_back();
  }
  return attributes;
}

MediaReader& mediaReader() {
  static MediaReader reader({.complain = [](const std::string& message) {
    std::fprintf(stderr, "standin: metadata: %s\n", message.c_str());
  }});
  return reader;
}

}  // namespace standin::metadata
