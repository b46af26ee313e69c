#include "shotlight/incomplete.h"

#include <cstdio>
#include <string>

#include "shotlight/commands.h"
#include "shotlight/table.h"
#include "standin/coreservices/metadata/unseen.h"

namespace shotlight {
namespace {

bool isMissing = false;

void say(const std::string& message) {
  std::fprintf(stderr, "shotlight: %s\n", message.c_str());
}

// "7 more files", or "1 file" where none was named.
std::string countText(size_t count, bool isMore, const std::string& what) {
  return std::to_string(count) + (isMore ? " more " : " ") + what + (count == 1 ? "" : "s");
}

void sayMore(const standin::UnseenPlaces& places, const std::string& what) {
  const size_t more = places.count - places.first.size();
  if (more > 0) say(countText(more, true, what) + " can't be read; what is in them is not searched");
}

}  // namespace

void tellUnseen() {
  const standin::Unseen unseen = standin::takeUnseen();
  for (const auto& [path, why] : unseen.folders.first)
    say(printable(path) + ": this folder can't be read: " + why + "; what is in it is not searched");
  sayMore(unseen.folders, "folder");
  for (const auto& [path, why] : unseen.files.first) say(printable(path) + ": " + printable(why));
  sayMore(unseen.files, "file");
  if (unseen.filesWithoutReader > 0)
    say(countText(unseen.filesWithoutReader, false, "file") + " can't be read, as a reader is missing");
  if (!unseen.empty()) noteMissing();
}

void forgetUnseen() {
  standin::takeUnseen();
}

void noteMissing() {
  isMissing = true;
}

int completeStatus(int status) {
  return isMissing && (status == kFound || status == kNothing) ? kIncomplete : status;
}

}  // namespace shotlight
