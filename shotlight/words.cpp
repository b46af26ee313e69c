#include "shotlight/words.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <vector>

#include "standin/gate/shown_text.h"

namespace shotlight {
namespace {

constexpr char kAnyRun = '*';

bool hasRange(std::string text) {
  constexpr const char* kName = "inrange";
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  for (size_t at = text.find(kName); at != std::string::npos; at = text.find(kName, at + 1)) {
    const size_t next = text.find_first_not_of(" \t\n\r", at + std::char_traits<char>::length(kName));
    if (next != std::string::npos && text[next] == '(') return true;
  }
  return false;
}

// The characters as they are, where a query would understand them otherwise; but for those that are kept.
std::string escaped(const std::string& text, char kept = '\0') {
  std::string result;
  for (const char c : text) {
    if (c != kept && (c == '"' || c == '\\' || c == '*' || c == '?')) result += '\\';
    result += c;
  }
  return result;
}

// What stands between blanks of any kind: the Japanese one is another than that of the Latin alphabet.
std::vector<std::string> wordsIn(const std::string& text) {
  std::vector<std::string> words;
  bool isNew = true;
  for (size_t i = 0; i < text.size();) {
    const standin::Character character = standin::characterAt(text, i);
    const bool isBlank = character.valid && u_isUWhiteSpace(static_cast<UChar32>(character.code));
    if (isNew && !isBlank) words.emplace_back();
    if (!isBlank) words.back() += text.substr(i, character.length);
    isNew = isBlank;
    i += character.length;
  }
  return words;
}

std::string conditionFor(const std::string& word) {
  const std::string name = "kMDItemDisplayName == ";
  if (word.find(kAnyRun) != std::string::npos) return name + '"' + escaped(word, kAnyRun) + "\"cd";
  return '(' + name + "\"*" + escaped(word) + "*\"cd || kMDItemTextContent == \"" + escaped(word) + "*\"cd)";
}

}  // namespace

bool isComparison(const std::string& text) {
  return text.find_first_of("=<>") != std::string::npos || text.find("&&") != std::string::npos ||
         text.find("||") != std::string::npos || hasRange(text);
}

std::string queryForWords(const std::string& text) {
  std::string query;
  for (const std::string& word : wordsIn(text)) query += (query.empty() ? "" : " && ") + conditionFor(word);
  return query;
}

std::string quotedValue(const std::string& text) {
  return '"' + escaped(text) + '"';
}

}  // namespace shotlight
