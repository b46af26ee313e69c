// What searches and items of this process could not look at: what they answer may lack something.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "standin/gate/gate.h"

namespace standin {

struct UnseenPlace {
  std::string path;
  std::string why;  // for people
};

struct UnseenPlaces {
  size_t count = 0;
  std::vector<UnseenPlace> first;  // at most five of them, always the same ones, by their paths
};

struct Unseen {
  UnseenPlaces folders;  // that can't be read; why: the system's reason
  UnseenPlaces files;    // without what was asked of them; why: what is missing, as a clause after the path
  size_t filesWithoutReader = 0;  // in which nothing can be read: complained of once (content_control.h)

  bool empty() const { return folders.count + files.count + filesWithoutReader == 0; }
};

// What is new since the last call. What counts is what could have changed an answer: every folder that was to
// be searched, and a file where the query, or who asked for an attribute, depended on what couldn't be read
// of it. What is gone doesn't count. In which order readers answer, and what the store knows, makes no
// difference.
STANDIN_API Unseen takeUnseen();

}  // namespace standin
