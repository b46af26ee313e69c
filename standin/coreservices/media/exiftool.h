// The program exiftool, which reads the metadata of media and documents: one process for many files, started
// when the first file is asked about.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "standin/coreservices/media/child_process.h"

namespace standin::metadata {

class ExifTool {
 public:
  struct Options {
    std::string program = "exiftool";                             // looked up in PATH unless it has a slash
    std::vector<std::string> arguments;                           // for every file
    std::chrono::milliseconds timeout = std::chrono::seconds(5);  // for one file, starting included
    std::function<void(const std::string&)> complain;             // called once at the most
  };

  explicit ExifTool(Options options) : options_(std::move(options)) {}
  // Asks the process to end, and ends it where it doesn't.
  ~ExifTool();
  ExifTool(const ExifTool&) = delete;
  ExifTool& operator=(const ExifTool&) = delete;

  // Hands what the program prints about a file to `accept`, which answers whether it makes sense. The path
  // is absolute and has no line breaks in it, and any bytes otherwise. False when the program is missing,
  // ends, or gives no such answer in time. It is started again for the next file, unless it has failed
  // several times in a row.
  bool ask(const std::string& path, const std::function<bool(std::string_view)>& accept);

  int starts() const { return starts_; }

 private:
  bool start();
  ChildProcess::Outcome converse(const std::string& path, std::string& answer);
  void fail(const std::string& what);

  Options options_;
  std::unique_ptr<ChildProcess> process_;
  int starts_ = 0;
  int questions_ = 0;
  int failures_ = 0;  // in a row
  bool complained_ = false;
};

}  // namespace standin::metadata
