#include "shotlight/keys.h"

#include <strings.h>

#include <algorithm>

#include "shotlight/commands.h"
#include "shotlight/errors.h"
#include "shotlight/output.h"
#include "shotlight/session.h"
#include "standin/host/host.h"

namespace shotlight {
namespace {

namespace host = standin::host;

const std::string kPrefix = "kMDItem";

// Of the keys, the one that was probably meant: the same in another letter case, or without its beginning.
std::string meantBy(const std::string& key, const std::vector<std::string>& known) {
  for (const std::string& each : known) {
    if (strcasecmp(each.c_str(), key.c_str()) == 0 || strcasecmp(each.c_str(), (kPrefix + key).c_str()) == 0)
      return each;
  }
  return "";
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

void checkKeys(const std::string& option, const std::vector<std::string>& keys) {
  if (keys.empty()) return;
  std::vector<std::string> known = classKeys();
  const auto schema = host::texts(host::callShared("MDItemZNK", "AllAttributes"));
  known.insert(known.end(), schema.begin(), schema.end());
  for (const std::string& key : keys) {
    if (std::find(known.begin(), known.end(), key) != known.end()) continue;
    const std::string meant = meantBy(key, known);
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
  for (const std::string& key : classKeys()) print(key + '\n');
  finishOutput();
  session.close();
  return kFound;
}

}  // namespace shotlight
