// A tree of files to measure with, and what measuring takes.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

// Writes the content of the file of that number, and answers its name's extension.
using MakeContent = std::function<std::string(int number, std::string& content)>;

// A new folder with so many files in it, 100 in a folder: small ones, or what is made for each. It is gone
// with its owner. Ends the process where it can't be made.
class Tree {
 public:
  Tree(const char* program, int files);
  Tree(const char* program, int files, const MakeContent& make);
  ~Tree();
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// The first argument, a number above 0, or what it is unless said otherwise. Ends the process for any other.
int countFrom(const char* program, int argc, char** argv, int usual);

double secondsOf(const std::function<void()>& work);
double best(const std::vector<double>& times);
size_t heapInUse();

}  // namespace bench
