// What the attributes are.
#include <unistd.h>

#include "shotlight/commands.h"
#include "shotlight/keys.h"
#include "shotlight/output.h"
#include "shotlight/session.h"
#include "shotlight/table.h"
#include "standin/host/host.h"

namespace shotlight {
namespace {

namespace host = standin::host;

std::string about(const char* question, const std::string& key) {
  return host::callShared("MDItemZNK", question, key).text();
}

Row rowOf(const std::string& key) {
  const bool several = host::callShared("MDItemZNK", "AttributeMultiValued", key).boolean();
  return {key, about("AttributeType", key), std::string(several ? "several" : ""),
          about("DisplayNameForAttribute", key), about("DisplayDescriptionForAttribute", key)};
}

}  // namespace

int schema(const Arguments& arguments) {
  std::string plugin;
  Arguments wanted = takeOptions("schema", arguments, {nameOption("--plugin", plugin)});
  Session session(plugin);
  checkKeys("schema", wanted);
  if (wanted.empty()) wanted = host::texts(host::callShared("MDItemZNK", "AllAttributes"));
  std::vector<Row> rows;
  for (const std::string& key : wanted) rows.push_back(rowOf(key));
  checkExceptions();
  if (!rows.empty())
    printTable({{.title = "Key", .whole = true},
                {.title = "Type", .whole = true},
                {"Values"},
                {"Name"},
                {"Description"}},
               rows, isatty(STDOUT_FILENO));
  finishOutput();
  session.close();
  return rows.empty() ? kNothing : kFound;
}

}  // namespace shotlight
