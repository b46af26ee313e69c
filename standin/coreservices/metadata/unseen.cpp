#include "standin/coreservices/metadata/unseen.h"

#include "standin/coreservices/disk/unseen.h"

namespace standin {
namespace {

UnseenPlaces taken(metadata::UnseenPlaces& places) {
  const metadata::UnseenPlaces::Told told = places.take();
  UnseenPlaces result{told.count, {}};
  for (const auto& [path, why] : told.first) result.first.push_back({path, why});
  return result;
}

}  // namespace

Unseen takeUnseen() {
  metadata::Unseen& own = metadata::unseen();
  return {taken(own.folders), taken(own.files), own.filesWithoutReader.take().count};
}

}  // namespace standin
