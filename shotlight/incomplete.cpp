#include "shotlight/incomplete.h"

#include <string>

#include "shotlight/commands.h"
#include "shotlight/output.h"
#include "standin/coreservices/metadata/unseen.h"

namespace shotlight {
namespace {

bool isMissing = false;

// "7 more files", or "1 file" where none was named.
std::string countText(size_t count, bool isMore, const std::string& what) {
  return std::to_string(count) + (isMore ? " more " : " ") + what + (count == 1 ? "" : "s");
}

void complainOfMore(const standin::UnseenPlaces& places, const std::string& what, const std::string& why) {
  const size_t more = places.count - places.first.size();
  if (more > 0) complain(countText(more, true, what) + ' ' + why);
}

}  // namespace

void tellUnseen() {
  const standin::Unseen unseen = standin::takeUnseen();
  for (const auto& [path, why] : unseen.folders.first)
    complain(path + ": this folder can't be read: " + why + "; what is in it is not searched");
  complainOfMore(unseen.folders, "folder", "can't be read");
  for (const auto& [path, why] : unseen.files.first) complain(path + ": " + why);
  complainOfMore(unseen.files, "file", "can't be read, or not in full");
  if (unseen.filesWithoutReader > 0)
    complain(countText(unseen.filesWithoutReader, false, "file") + " can't be read, as a reader is missing");
  if (!unseen.empty()) noteMissing();
}

void noteMissing() {
  isMissing = true;
}

int completeStatus(int status) {
  return isMissing && (status == kFound || status == kNothing) ? kIncomplete : status;
}

}  // namespace shotlight
