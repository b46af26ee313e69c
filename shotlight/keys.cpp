#include "shotlight/keys.h"

#include <algorithm>
#include <utility>

#include "shotlight/commands.h"
#include "shotlight/errors.h"
#include "shotlight/output.h"
#include "shotlight/session.h"
#include "shotlight/table.h"
#include "standin/host/host.h"

namespace shotlight {
namespace {

namespace host = standin::host;

const std::string kPrefix = "kMDItem";

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c); });
  return text;
}

// How many letters must be changed, added, left out or swapped with the next to make one of the other.
size_t distance(const std::string& one, const std::string& other) {
  std::vector<size_t> beforeLast, last, row(other.size() + 1);
  for (size_t j = 0; j <= other.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= one.size(); ++i) {
    beforeLast = std::exchange(last, row);
    row[0] = i;
    for (size_t j = 1; j <= other.size(); ++j) {
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (one[i - 1] != other[j - 1])});
      if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1])
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
  }
  return row[other.size()];
}

std::vector<std::string> knownKeys() {
  std::vector<std::string> known = classKeys();
  const auto schema = host::texts(host::callShared("MDItemZNK", "AllAttributes"));
  known.insert(known.end(), schema.begin(), schema.end());
  return known;
}

std::string nearestOf(const std::vector<std::string>& known, const std::string& key) {
  constexpr size_t kMostWrong = 2, kLettersForOneWrong = 4;
  const std::string prefix = lower(kPrefix);
  std::string meant = lower(key);
  if (meant.starts_with(prefix)) meant.erase(0, prefix.size());
  size_t least = std::min(kMostWrong, meant.size() / kLettersForOneWrong) + 1;
  std::string nearest;
  for (const std::string& each : known) {
    const size_t wrong = distance(lower(each).substr(prefix.size()), meant);
    if (wrong >= least) continue;
    least = wrong;
    nearest = each;
  }
  return nearest;
}

}  // namespace

std::vector<std::string> classKeys() {
  std::vector<std::string> keys;
  for (const host::Member& member : host::members("MDItemZNK")) {
    if (member.kind == host::MemberKind::sharedMethod && member.name.starts_with(kPrefix))
      keys.push_back(host::callShared("MDItemZNK", member.name).text());
  }
  checkExceptions();
  return keys;
}

std::string nearestKey(const std::string& key) {
  return nearestOf(knownKeys(), key);
}

void checkKeys(const std::string& option, const std::vector<std::string>& keys) {
  if (keys.empty()) return;
  const std::vector<std::string> known = knownKeys();
  for (const std::string& key : keys) {
    if (std::find(known.begin(), known.end(), key) != known.end()) continue;
    const std::string meant = nearestOf(known, key);
    throw UsageError(option + " '" + key + "': no such key; " +
                     (meant.empty() ? "shotlight keys lists them" : "is " + meant + " meant?"));
  }
}

int keys(const Arguments& arguments) {
  std::string plugin;
  const Arguments operands = takeOptions("keys", arguments, {nameOption("--plugin", plugin)});
  if (!operands.empty())
    throw UsageError("'" + operands.front() + "' is one argument too many; keys takes none");
  Session session(plugin);
  for (const std::string& key : classKeys()) printRow({key});
  finishOutput();
  session.close();
  return kFound;
}

}  // namespace shotlight
