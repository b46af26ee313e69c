#include "standin/coreservices/metadata/content_control.h"

#include <sys/stat.h>

#include <stdexcept>
#include <utility>

#include "standin/coreservices/content/content_reader.h"
#include "standin/coreservices/store/content_store.h"

namespace standin {
void setContentOptions(ContentOptions options) {
  metadata::ContentReader::Options& own = metadata::contentReaderOptions();
  own.store.folder = std::move(options.folder);
  if (options.complain) own.complain = std::move(options.complain);
}

ContentStoreReport contentStoreIn(const std::string& folder) {
  ContentStoreReport report;
  report.path = metadata::contentDatabaseIn(folder);
  report.limit = metadata::ContentStore::Options().limit;
  if (const auto database = metadata::openContentDatabase(folder)) {
    const metadata::ContentDatabase::Totals totals = database->totals();
    report.exists = true;
    for (const char* const end : {"", "-wal"}) {
      struct stat info;
      if (::stat((report.path + end).c_str(), &info) == 0)
        report.bytes += static_cast<uint64_t>(info.st_size);
    }
    report.files = totals.files;
    report.reads = totals.reads;
    report.hits = totals.hits;
  }
  return report;
}

std::vector<std::string> checkContentStore(const std::string& folder) {
  try {
    const auto database = metadata::openContentDatabase(folder);
    return database ? database->check() : std::vector<std::string>();
  } catch (const metadata::DatabaseError& error) {
    if (error.kind != metadata::DatabaseError::Damaged) throw;
    return {error.what()};
  }
}

void clearContentStore(const std::string& folder) {
  if (const auto problem = metadata::removeContentDatabase(folder)) {
    throw std::runtime_error(metadata::contentDatabaseIn(folder) + ' ' + *problem);
  }
}

}  // namespace standin
