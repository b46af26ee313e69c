// Makes files one by one in a folder that a query follows, each told before the next is made: for counting
// the instructions of a change. Usage: bench-live-change FOLDER CHANGES
#include <CoreServices/CoreServices.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "standin/coreservices/metadata/control.h"

namespace {

int updates = 0;
void countUpdate(CFNotificationCenterRef, void*, CFStringRef, const void*, CFDictionaryRef) {
  ++updates;
}

std::string newFile(const std::string& folder, int number) {
  return folder + "/new " + std::to_string(100000 + number) + ".txt";
}

bool makeAndBeTold(const std::string& path) {
  const int before = updates;
  const int fd = ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  ::close(fd);
  while (updates == before) {
    if (CFRunLoopRunInMode(kCFRunLoopDefaultMode, 10, true) == kCFRunLoopRunTimedOut) return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: bench-live-change FOLDER CHANGES\n");
    return 2;
  }
  const std::string folder = argv[1];
  const int changes = std::atoi(argv[2]);
  standin::setIndexedFolders({folder});
  const MDQueryRef query = MDQueryCreate(kCFAllocatorDefault, CFSTR("kMDItemFSSize >= 0"), nullptr, nullptr);
  MDQueryBatchingParams atOnce = MDQueryGetBatchingParameters(query);
  atOnce.update_max_ms = 0;
  MDQuerySetBatchingParameters(query, atOnce);
  MDQueryExecute(query, kMDQueryWantsUpdates);
  while (!MDQueryIsGatheringComplete(query)) CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, true);
  CFNotificationCenterAddObserver(CFNotificationCenterGetLocalCenter(), &updates, countUpdate,
                                  kMDQueryDidUpdateNotification, query,
                                  CFNotificationSuspensionBehaviorDeliverImmediately);
  const CFIndex before = MDQueryGetResultCount(query);
  bool told = true;
  for (int i = 0; told && i < changes; ++i) told = makeAndBeTold(newFile(folder, i));
  const CFIndex found = MDQueryGetResultCount(query) - before;
  CFNotificationCenterRemoveEveryObserver(CFNotificationCenterGetLocalCenter(), &updates);
  CFRelease(query);
  for (int i = 0; i < changes; ++i) ::unlink(newFile(folder, i).c_str());
  if (told && found == changes) return 0;
  std::fprintf(stderr, "bench-live-change: of %d files, %ld were told\n", changes, found);
  return 1;
}
