// What could not be looked at, so that results may lack something: folders without their content, and files
// without what a query asked of them. What is gone is none of it.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <unordered_set>

namespace standin::metadata {

// Of places, how many there are, and some of them by name: always the same, in whichever order they are met.
class UnseenPlaces {
 public:
  struct Told {
    size_t count = 0;
    std::map<std::string, std::string> first;  // why, by path
  };

  // `why` is for people. Each place counts once; the first reason stays.
  void add(std::string_view path, std::string_view why);
  // What was added since the last call.
  Told take();

 private:
  std::unordered_set<uint64_t> known_;  // hashes of the paths: there may be very many
  Told told_;
};

// Of this process. Files are named with what is missing of them; of those without a reader, which is
// complained of once, the reason is empty.
struct Unseen {
  UnseenPlaces folders, files, filesWithoutReader;
};
Unseen& unseen();

// `error` is errno's, after an attempt to read the folder.
void noteUnseenFolder(std::string_view path, int error);
// `why` says what is missing; empty where there is no reader.
void noteUnseenFile(std::string_view path, std::string_view why);

// Gone, or something else in its place.
bool meansGone(int error);

// "can't be read: Permission denied; what is in it is not searched"
std::string cannotBeRead(int error);

}  // namespace standin::metadata
