// media/: what photos, sound, movies and documents say of themselves: exiftool, which runs beside this
// process, and the table of which of its tags mean which attribute. It includes attributes/ and disk/, and
// nothing of files/, which asks it.
//
// Here: the reader, which remembers the answers for the files that were read last.
#pragma once

#include <sys/stat.h>

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <tuple>
#include <unordered_map>

#include "standin/coreservices/disk/file_location.h"
#include "standin/coreservices/media/exiftool.h"
#include "standin/coreservices/media/media_attributes.h"

namespace standin::metadata {

class MediaReader {
 public:
  struct Options {
    std::string program = "exiftool";
    std::chrono::milliseconds timeout = std::chrono::seconds(5);
    std::function<void(const std::string&)> complain;
    size_t filesKept = 512;
  };
  explicit MediaReader(const Options& options);

  // Without values when nothing can be read. `file` is a regular file.
  std::shared_ptr<const MediaAttributes> read(const FileLocation& file);

  int starts() const { return exiftool_.starts(); }
  int filesRead() const { return filesRead_; }  // without those that were remembered

 private:
  // What changes with a file's content.
  using State = std::tuple<uint32_t, uint32_t, uint64_t, uint64_t, int64_t, uint32_t, int64_t, uint32_t>;
  struct Kept {
    std::string path;
    State state;
    std::shared_ptr<const MediaAttributes> attributes;
  };

  static State stateOf(const struct statx& info);
  std::shared_ptr<const MediaAttributes> readAnew(const FileLocation& file);
  std::shared_ptr<const MediaAttributes> ask(const std::string& path);

  ExifTool exiftool_;
  size_t filesKept_;
  int filesRead_ = 0;
  std::list<Kept> kept_;  // the one used last comes first
  std::unordered_map<std::string_view, std::list<Kept>::iterator> byPath_;
};

// The process's own. It complains on standard error.
MediaReader& mediaReader();

}  // namespace standin::metadata
