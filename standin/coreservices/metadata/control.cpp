#include "standin/coreservices/metadata/control.h"

#include <utility>
#include <variant>

#include "standin/coreservices/language/parser.h"
#include "standin/coreservices/metadata/query_run.h"
#include "standin/coreservices/metadata/settings.h"

namespace standin {

metadata::Settings& metadata::settings() {
  static Settings s;
  return s;
}

void setIndexedFolders(std::vector<std::string> folders, std::vector<std::string> excluded) {
  metadata::settings().indexedFolders = std::move(folders);
  metadata::settings().excludedFolders = std::move(excluded);
}

std::optional<QueryError> checkQuery(std::u16string_view queryString) {
  const auto parsed = metadata::parseQuery(queryString);
  const auto* const error = std::get_if<metadata::ParseError>(&parsed);
  if (!error) return {};
  return QueryError{error->position, error->reason};
}

SearchScope takeSearchScope() {
  return std::exchange(metadata::settings().lastScope, {});
}

SearchStatistics lastSearch() {
  return metadata::settings().lastSearch;
}

std::string liveUpdateProblem() {
  return metadata::settings().updateProblem;
}

void loseEvents() {
  for (metadata::QueryRun* const run : metadata::settings().followers) run->loseEvents();
}

}  // namespace standin
