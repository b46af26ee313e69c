#include "shotlight/doubts.h"

#include <cstdio>
#include <set>

#include "shotlight/errors.h"
#include "shotlight/keys.h"
#include "shotlight/output.h"
#include "shotlight/text.h"
#include "standin/coreservices/metadata/control.h"

namespace shotlight {
namespace {

std::string warningOf(const standin::QueryDoubt& doubt, std::u16string_view query) {
  if (!doubt.reason.empty())
    return utf8(query.substr(doubt.position, doubt.length)) + ": " + doubt.key + ' ' + doubt.reason;
  const std::string meant = nearestKey(doubt.key);
  return "no file has " + doubt.key + "; " +
         (meant.empty() ? "shotlight keys lists the keys" : "did you mean " + meant + "?");
}

}  // namespace

void warnOfDoubts(const std::string& query) {
  const auto units = utf16(query);
  if (!units) return;
  std::set<std::string> said;
  for (const standin::QueryDoubt& doubt : standin::queryDoubts(*units)) {
    const std::string warning = warningOf(doubt, *units);
    if (said.insert(warning).second) complain("warning: " + warning);
  }
}

void checkBytes(const std::string& query) {
  if (query.starts_with("\xEF\xBB\xBF"))
    throw CommandError("the query starts with a byte order mark, at byte 1; leave it out");
  const size_t at = endOfValid(query);
  if (at == query.size()) return;
  char byte[8];
  std::snprintf(byte, sizeof byte, "\\x%02X", static_cast<unsigned char>(query[at]));
  throw CommandError("the query is not valid UTF-8 at byte " + std::to_string(at + 1) + ", " + byte +
                     "; write it in UTF-8");
}

}  // namespace shotlight
