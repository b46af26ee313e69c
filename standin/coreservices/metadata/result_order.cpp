#include "standin/coreservices/metadata/result_order.h"

#include <utility>

namespace standin::metadata {

ResultOrder::File ResultOrder::at(size_t index) const {
  const auto after =
      std::upper_bound(pieces_.begin(), pieces_.end(), index,
                       [](size_t i, const std::unique_ptr<Piece>& piece) { return i < piece->start; });
  const Piece& piece = **std::prev(after);
  return piece.files[index - piece.start];
}

size_t ResultOrder::indexOf(File file) const {
  const Piece& piece = *pieceOf_[file];
  const auto place = std::find(piece.files.begin(), piece.files.end(), file);
  return piece.start + static_cast<size_t>(place - piece.files.begin());
}

std::vector<ResultOrder::File> ResultOrder::files() const {
  std::vector<File> all;
  all.reserve(size_);
  for (const auto& piece : pieces_) all.insert(all.end(), piece->files.begin(), piece->files.end());
  return all;
}

void ResultOrder::assign(const std::vector<File>& files) {
  pieces_.clear();
  size_ = 0;
  for (const File file : files) append(file);
}

void ResultOrder::append(File file) {
  if (pieces_.empty() || pieces_.back()->files.size() == kLargestPiece) {
    pieces_.push_back(std::make_unique<Piece>(Piece{size_, pieces_.size(), {}}));
    pieces_.back()->files.reserve(kLargestPiece);
  }
  Piece& last = *pieces_.back();
  setPiece(file, last);
  last.files.push_back(file);
  ++size_;
}

void ResultOrder::setPiece(File file, Piece& piece) {
  if (file == pieceOf_.size()) {
    pieceOf_.push_back(&piece);
  } else {
    if (file > pieceOf_.size()) pieceOf_.resize(file + 1);
    pieceOf_[file] = &piece;
  }
}

void ResultOrder::put(File file, size_t number, size_t place) {
  Piece& piece = *pieces_[number];
  setPiece(file, piece);
  piece.files.insert(piece.files.begin() + static_cast<ptrdiff_t>(place), file);
  ++size_;
  shiftStarts(number + 1, 1);
  if (piece.files.size() > kLargestPiece) split(number);
}

void ResultOrder::split(size_t number) {
  Piece& piece = *pieces_[number];
  const size_t half = piece.files.size() / 2;
  const auto middle = piece.files.begin() + static_cast<ptrdiff_t>(half);
  auto second = std::make_unique<Piece>(Piece{piece.start + half, 0, {middle, piece.files.end()}});
  piece.files.erase(middle, piece.files.end());
  for (const File file : second->files) pieceOf_[file] = second.get();
  pieces_.insert(pieces_.begin() + static_cast<ptrdiff_t>(number) + 1, std::move(second));
  for (size_t i = number + 1; i < pieces_.size(); ++i) pieces_[i]->number = i;
}

void ResultOrder::remove(File file) {
  Piece& piece = *pieceOf_[file];
  const size_t number = piece.number;
  std::erase(piece.files, file);
  --size_;
  shiftStarts(number + 1, size_t{0} - 1);
  if (!piece.files.empty()) return;
  pieces_.erase(pieces_.begin() + static_cast<ptrdiff_t>(number));
  for (size_t i = number; i < pieces_.size(); ++i) pieces_[i]->number = i;
}

void ResultOrder::shiftStarts(size_t firstPiece, size_t by) {
  for (size_t i = firstPiece; i < pieces_.size(); ++i) pieces_[i]->start += by;
}

}  // namespace standin::metadata
