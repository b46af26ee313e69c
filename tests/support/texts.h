// Lists in tests, compared and printed whole by EXPECT_EQ.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

typedef std::vector<std::string> Texts;

// For what may come in any order.
template <typename Element = std::string>
std::vector<Element> sorted(std::vector<Element> elements) {
  std::sort(elements.begin(), elements.end());
  return elements;
}

// Those of `expected` that are not among `texts`: none where others may be there, too.
inline Texts missingFrom(const Texts& texts, Texts expected) {
  std::erase_if(expected, [&](const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
  });
  return expected;
}
