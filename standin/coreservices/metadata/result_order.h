// The order of a query's results: which file is at an index, and at which index a file is.
//
// Files stand in pieces of some hundred, so that one that comes or goes moves its neighbours and not all
// those behind it. What is left of the cost of all results is a number for each piece.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

#include "standin/coreservices/search/result_store.h"

namespace standin::metadata {

class ResultOrder {
 public:
  using File = ResultStore::File;

  ResultOrder() = default;
  ResultOrder(const ResultOrder&) = delete;
  ResultOrder& operator=(const ResultOrder&) = delete;

  size_t size() const { return size_; }
  File at(size_t index) const;      // below size()
  size_t indexOf(File file) const;  // of a file that is there
  std::vector<File> files() const;  // all, in their order
  void assign(const std::vector<File>& files);

  // None of these may be there already.
  void append(File file);
  // Behind all others but those that it comes before; they are in the order of `before`.
  template <class Before>
  void insert(File file, Before before);

  void remove(File file);  // that is there

 private:
  static constexpr size_t kLargestPiece = 512;

  struct Piece {
    size_t start;             // the index of its first file
    size_t number;            // of the piece
    std::vector<File> files;  // never empty
  };

  void put(File file, size_t piece, size_t place);
  void setPiece(File file, Piece& piece);
  void split(size_t piece);
  void shiftStarts(size_t firstPiece, size_t by);

  size_t size_ = 0;
  std::vector<std::unique_ptr<Piece>> pieces_;
  std::vector<Piece*> pieceOf_;  // by file
};

template <class Before>
void ResultOrder::insert(File file, Before before) {
  // The first piece that ends with a file that comes after this one.
  const auto piece = std::upper_bound(
      pieces_.begin(), pieces_.end(), file,
      [&](File inserted, const std::unique_ptr<Piece>& p) { return before(inserted, p->files.back()); });
  if (piece == pieces_.end()) return append(file);
  const std::vector<File>& files = (*piece)->files;
  const auto place = std::upper_bound(files.begin(), files.end(), file, before);
  put(file, (*piece)->number, static_cast<size_t>(place - files.begin()));
}

}  // namespace standin::metadata
