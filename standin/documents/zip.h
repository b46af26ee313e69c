// The entries of a ZIP archive.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "standin/documents/limits.h"

struct archive;
struct archive_entry;

namespace standin::documents {

// Goes through the entries in the order of their data, as often as it is asked to. What is unpacked counts
// over all of these rounds. Every function throws a DocumentError where the archive can't be read.
class ZipArchive {
 public:
  // Both must outlive this. `kind` is what people call such a document.
  ZipArchive(int file, const Deadline& deadline, std::string_view kind);

  // Starts over.
  void rewind();

  // Goes to the next entry; false after the last.
  bool next();

  std::string_view name() const;

  // The next bytes of this entry, good until the next call; none at its end.
  std::string_view read();
  std::string readWhole();

 private:
  struct Free {
    void operator()(archive* reader) const;
  };

  int file_;
  const Deadline& deadline_;
  std::string kind_;
  std::unique_ptr<archive, Free> reader_;
  archive_entry* entry_ = nullptr;
  uint64_t unpacked_ = 0;
  std::vector<char> buffer_;
};

}  // namespace standin::documents
