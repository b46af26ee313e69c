// bridge-depth FILE...: how deep arrays and dictionaries may nest for the conversions of each binary to fit
// in the stack of a secondary thread on the Mac. Every depth is tried in a process of its own, which does not
// survive one that is too great.
#include <CoreFoundation/CoreFoundation.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>

#include "standin/host/host.h"
#include "standin/plugin/plugin_file.h"

namespace {

namespace host = standin::host;

const size_t kStackSize = 512 * 1024;

// Nothing of what these make is released: the process ends after the conversion.

CFTypeRef nestedArrays(int depth) {
  CFTypeRef tree = kCFBooleanTrue;
  for (int i = 0; i < depth; ++i) {
    const CFMutableArrayRef array = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
    CFArrayAppendValue(array, tree);
    tree = array;
  }
  return tree;
}

CFTypeRef nestedDictionaries(int depth) {
  CFTypeRef tree = kCFBooleanTrue;
  for (int i = 0; i < depth; ++i) {
    const CFMutableDictionaryRef dictionary = CFDictionaryCreateMutable(
        nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    CFDictionarySetValue(dictionary, CFSTR("key"), tree);
    tree = dictionary;
  }
  return tree;
}

// The plug-in's own, as the host would give it.
void* handleOf(const host::Value& value) {
  typedef void Get(void* array, int32_t index, void** out);
  const host::Value array = host::objectArray({value});
  const auto procedure = reinterpret_cast<Get* (*)(void*)>(host::resolve("RuntimeArrayDirectGetGetProc"));
  void* handle = nullptr;
  procedure(array.handle())(array.handle(), 0, &handle);
  return handle;
}

void* nestedHostArrays(int depth) {
  host::Value tree = host::objectArray({host::Value(true)});
  for (int i = 1; i < depth; ++i) tree = host::objectArray({tree});
  return handleOf(tree);
}

void* nestedHostDictionaries(int depth) {
  host::Value tree = host::dictionary({{"key", true}});
  for (int i = 1; i < depth; ++i) tree = host::dictionary({{"key", tree}});
  return handleOf(tree);
}

void runOnSmallStack(std::function<void()> work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_t thread;
  const auto entry = [](void* function) -> void* {
    (*static_cast<std::function<void()>*>(function))();
    return nullptr;
  };
  if (pthread_attr_setstacksize(&attributes, kStackSize) != 0 ||
      pthread_create(&thread, &attributes, entry, &work) != 0) {
    std::perror("bridge-depth: a thread");
    std::exit(2);
  }
  pthread_join(thread, nullptr);
}

struct Kind {
  const char* name;
  CFTypeRef (*value)(int depth);
  void* (*variant)(int depth);
};
const Kind kKinds[] = {
    {"arrays, to host code", nestedArrays, nullptr},
    {"arrays, to the platform", nullptr, nestedHostArrays},
    {"dictionaries, to host code", nestedDictionaries, nullptr},
    {"dictionaries, to the platform", nullptr, nestedHostDictionaries},
};

void convert(const char* file, const Kind& kind, int depth) {
  host::start();
  const standin::PluginFile plugin(file);
  plugin.main()(host::resolve);
  if (kind.value) {
    const auto toVariant = reinterpret_cast<void* (*)(CFTypeRef)>(plugin.symbol("toVariant"));
    const CFTypeRef value = kind.value(depth);
    runOnSmallStack([&] { toVariant(value); });
  } else {
    const auto toCF = reinterpret_cast<CFTypeRef (*)(void*)>(plugin.symbol("toCF"));
    void* const variant = kind.variant(depth);
    runOnSmallStack([&] { toCF(variant); });
  }
  _exit(0);  // the tree's own end would need a stack as deep
}

bool fits(const char* file, const Kind& kind, int depth) {
  const pid_t child = fork();
  if (child == 0) {
    const rlimit noCore = {0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    try {
      convert(file, kind, depth);
    } catch (const standin::PluginFileError& error) {
      std::fprintf(stderr, "bridge-depth: %s\n", error.what());
      _exit(2);
    }
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) {
    std::perror("bridge-depth: a process");
    std::exit(2);
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return true;
  if (WIFEXITED(status) && WEXITSTATUS(status) == 2) std::exit(2);  // the child has said why
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV) return false;
  std::fprintf(stderr, "bridge-depth: %s of %s, %d levels: ended with status %d, not for lack of stack\n",
               file, kind.name, depth, status);
  std::exit(2);
}

int greatestDepth(const char* file, const Kind& kind) {
  int good = 1, bad = 2;
  for (; fits(file, kind, bad); bad *= 2) good = bad;
  while (bad - good > 1) {
    const int middle = good + (bad - good) / 2;
    (fits(file, kind, middle) ? good : bad) = middle;
  }
  return good;
}

}  // namespace

int main(int count, char** words) {
  if (count < 2) {
    std::fprintf(stderr, "usage: %s FILE... (bridge modules with the conversions exported)\n", words[0]);
    return 2;
  }
  for (int i = 1; i < count; ++i) {
    std::printf("%s\n", words[i]);
    for (const Kind& kind : kKinds) {
      std::printf("  %-30s %6d levels\n", kind.name, greatestDepth(words[i], kind));
      std::fflush(stdout);
    }
  }
}
