#include "standin/coreservices/disk/unseen.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <utility>

namespace standin::metadata {
namespace {

constexpr size_t kNamed = 5;

uint64_t hashOf(std::string_view text) {  // FNV-1a
  uint64_t hash = 14695981039346656037ULL;
  for (const char c : text) hash = (hash ^ static_cast<uint8_t>(c)) * 1099511628211ULL;
  return hash;
}

}  // namespace

// The first by name, since readers answer in any order.
void UnseenPlaces::add(std::string_view path, std::string_view why) {
  if (!known_.insert(hashOf(path)).second) return;
  ++told_.count;
  told_.first.emplace(path, why);
  if (told_.first.size() > kNamed) told_.first.erase(std::prev(told_.first.end()));
}

UnseenPlaces::Told UnseenPlaces::take() {
  return std::exchange(told_, {});
}

Unseen& unseen() {
  static auto* const own = new Unseen;  // kept: items are asked until the very end
  return *own;
}

void noteUnseenFolder(std::string_view path, int error) {
  unseen().folders.add(path, std::strerror(error));
}

void noteUnseenFile(std::string_view path, std::string_view why) {
  Unseen& own = unseen();
  (why.empty() ? own.filesWithoutReader : own.files).add(path, why);
}

bool meansGone(int error) {
  return error == ENOENT || error == ENOTDIR || error == ELOOP;
}

std::string cannotBeRead(int error) {
  return std::string("can't be read: ") + std::strerror(error) + "; what is in it is not searched";
}

}  // namespace standin::metadata
