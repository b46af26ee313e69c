// Whether a query keeps up with changes of files: at a rate of 1,000 a second, and as fast as they can be
// made. Usage: bench-live [FILES]; 100,000 files that the query finds at first, unless said otherwise.
#include <CoreServices/CoreServices.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "bench/tree.h"
#include "standin/coreservices/metadata/control.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kChanges = 10000;

// One change in three makes a file, one changes it, one renames it.
void change(const std::string& root, const std::string& name, int i) {
  const std::string path =
      root + "/group-000/folder-0000" + std::to_string(i / 3 % 10) + "/" + name + std::to_string(i / 3);
  if (i % 3 == 0) ::close(::open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
  if (i % 3 == 1 && ::truncate(path.c_str(), i) != 0) std::perror("bench-live");
  if (i % 3 == 2 && ::rename(path.c_str(), (path + " renamed").c_str()) != 0) std::perror("bench-live");
}

double threadSeconds() {
  rusage usage;
  ::getrusage(RUSAGE_THREAD, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

int updates = 0;
void countUpdate(CFNotificationCenterRef, void*, CFStringRef, const void*, CFDictionaryRef) {
  ++updates;
}

// Answers whether the query has the results that a new one finds.
bool follow(const char* what, const std::string& root, double changesPerSecond) {
  const MDQueryRef query = MDQueryCreate(kCFAllocatorDefault, CFSTR("kMDItemFSSize >= 0"), nullptr, nullptr);
  MDQueryExecute(query, kMDQueryWantsUpdates);
  while (!MDQueryIsGatheringComplete(query)) CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, true);
  const CFIndex expected = MDQueryGetResultCount(query) + (kChanges + 2) / 3;
  CFNotificationCenterAddObserver(CFNotificationCenterGetLocalCenter(), &updates, countUpdate,
                                  kMDQueryDidUpdateNotification, query,
                                  CFNotificationSuspensionBehaviorDeliverImmediately);
  updates = 0;
  std::atomic<bool> done = false;
  const auto start = Clock::now();
  auto end = start;
  std::thread writer([&] {
    for (int i = 0; i < kChanges; ++i) {
      if (changesPerSecond > 0) {
        std::this_thread::sleep_until(start + std::chrono::duration<double>(i / changesPerSecond));
      }
      change(root, what, i);
    }
    end = Clock::now();
    done = true;
  });
  const double before = threadSeconds();
  while (!done) CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.1, true);
  writer.join();
  while (MDQueryGetResultCount(query) != expected && Clock::now() - end < std::chrono::seconds(30)) {
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.01, true);
  }
  const double late = std::chrono::duration<double>(Clock::now() - end).count();
  const double making = std::chrono::duration<double>(end - start).count();
  const CFIndex found = MDQueryGetResultCount(query);
  std::printf("%-20s %d changes in %6.3f s; all told %6.3f s later, in %d updates; processor %6.3f s; %s\n",
              what, kChanges, making, late, updates, threadSeconds() - before,
              found == expected ? "none lost" : "SOME LOST");
  CFNotificationCenterRemoveEveryObserver(CFNotificationCenterGetLocalCenter(), &updates);
  CFRelease(query);
  return found == expected;
}

}  // namespace

int main(int argc, char** argv) {
  const int files = bench::countFrom("bench-live", argc, argv, 100000);
  const bench::Tree tree("bench-live", files);
  standin::setIndexedFolders({tree.path()});
  const bool steadily = follow("1,000 a second", tree.path(), 1000);
  const bool fast = follow("as fast as can be", tree.path(), 0);
  return steadily && fast ? 0 : 1;
}
