#include "standin/documents/zip.h"

#include <archive.h>
#include <archive_entry.h>
#include <unistd.h>

#include <new>

namespace standin::documents {
namespace {

constexpr size_t kBlock = 65536;

// What an office program makes of a document that is to be encrypted.
constexpr std::string_view kCompoundFile = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";

bool startsWith(int file, std::string_view bytes) {
  char first[kCompoundFile.size()];
  return ::pread(file, first, bytes.size(), 0) == static_cast<ssize_t>(bytes.size()) &&
         std::string_view(first, bytes.size()) == bytes;
}

[[noreturn]] void failAsDamaged(archive* reader) {
  const char* const reason = archive_error_string(reader);
  std::string why = reason ? reason : "no reason is known";
  while (why.ends_with('\n')) why.pop_back();  // some have it
  throw DocumentError("is a damaged ZIP archive: " + why);
}

[[noreturn]] void failAsTooMuch() {
  throw DocumentError("unpacks to more than " + std::to_string(kMostUnpacked / kMegabyte) + " MB");
}

}  // namespace

void ZipArchive::Free::operator()(archive* reader) const {
  archive_read_free(reader);
}

ZipArchive::ZipArchive(int file, const Deadline& deadline, std::string_view kind)
    : file_(file), deadline_(deadline), kind_(kind), buffer_(kBlock) {
  if (startsWith(file, kCompoundFile)) throw DocumentError("is encrypted, or no " + kind_);
  rewind();
}

void ZipArchive::rewind() {
  entry_ = nullptr;
  reader_.reset(archive_read_new());
  if (!reader_) throw std::bad_alloc();
  // Only by its directory: an archive without one is cut off, and going through it would unpack what is
  // skipped.
  archive_read_support_format_zip_seekable(reader_.get());
  if (::lseek(file_, 0, SEEK_SET) != 0 || archive_read_open_fd(reader_.get(), file_, kBlock) != ARCHIVE_OK) {
    throw DocumentError("is no ZIP archive, as every " + kind_ + " is, or is cut off");
  }
}

bool ZipArchive::next() {
  deadline_.check();
  const int result = archive_read_next_header(reader_.get(), &entry_);
  if (result == ARCHIVE_EOF) return false;
  if (result == ARCHIVE_OK || result == ARCHIVE_WARN) return true;
  if (!entry_) throw DocumentError("is no ZIP archive, as every " + kind_ + " is, or is cut off");
  failAsDamaged(reader_.get());
}

std::string_view ZipArchive::name() const {
  const char* const name = archive_entry_pathname(entry_);
  return name ? name : "";
}

std::string_view ZipArchive::read() {
  deadline_.check();
  if (archive_entry_is_data_encrypted(entry_)) throw DocumentError("is encrypted");
  // What the directory says of the size spares the work; but it may be wrong.
  if (archive_entry_size(entry_) > static_cast<la_int64_t>(kMostUnpacked)) failAsTooMuch();
  const la_ssize_t size = archive_read_data(reader_.get(), buffer_.data(), buffer_.size());
  if (size < 0) failAsDamaged(reader_.get());
  unpacked_ += static_cast<uint64_t>(size);
  if (unpacked_ > kMostUnpacked) failAsTooMuch();
  return {buffer_.data(), static_cast<size_t>(size)};
}

std::string ZipArchive::readWhole() {
  std::string bytes;
  for (std::string_view some; !(some = read()).empty();) bytes += some;
  return bytes;
}

}  // namespace standin::documents
