// documents/: the program `document-text`, which reads the text of documents and is a process of its own, so
// that a broken document can crash or hold up nothing else. It includes nothing of the other folders.
//
// Here: what one document may cost.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace standin::documents {

constexpr uint64_t kMegabyte = 1 << 20;

// The largest document that is read at all, and the largest HTML page, which is read whole.
constexpr uint64_t kLargestDocument = 1024 * kMegabyte;
constexpr uint64_t kLargestPage = 64 * kMegabyte;

// What is unpacked of one document.
constexpr uint64_t kMostUnpacked = 64 * kMegabyte;

// Of a longer text, so many of its first bytes count.
constexpr size_t kLongestText = 16 * kMegabyte;

// For one document; pdftotext takes longer for many pages than all others for theirs.
constexpr std::chrono::seconds kLongestTime{4};
constexpr std::chrono::seconds kLongestTimeOfPdftotext{8};

// Address space of this process, and of pdftotext.
constexpr uint64_t kMostMemory = 512 * kMegabyte;
constexpr uint64_t kMostMemoryOfPdftotext = 1024 * kMegabyte;

// Why a document's text can't be told: words for people that follow the document's name, such as "is
// encrypted".
class DocumentError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The same where it is not the document's fault, and may be otherwise next time.
class UnreadableError : public DocumentError {
 public:
  using DocumentError::DocumentError;
};

class Deadline {
 public:
  // From now on.
  explicit Deadline(std::chrono::seconds time) : time_(time), end_(std::chrono::steady_clock::now() + time) {}

  std::chrono::milliseconds left() const {
    using namespace std::chrono;
    return duration_cast<milliseconds>(end_ - steady_clock::now());
  }

  // Throws when the time is over.
  void check() const {
    if (left().count() > 0) return;
    throw UnreadableError("takes more than " + std::to_string(time_.count()) + " seconds to read");
  }

 private:
  std::chrono::seconds time_;
  std::chrono::steady_clock::time_point end_;
};

}  // namespace standin::documents
