// Calls of a plug-in, one after the other, for callgrind to count what each takes: what runs in `measured`
// counts, and bench-calls subtracts what the call of an empty function takes there. Usage: FILE CALL...,
// where FILE is a plug-in (ELF or Mach-O) and CALL the name of a row of kCalls. Compiled with NOTED, it
// prints the calls that arrive at the stubs, on standard error.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "bench/calls/host.h"
#include "bench/calls/note.h"
#include "bench/calls/things.h"
#include "macho/loader/loader.h"

namespace bench::calls {
namespace {

typedef void* Function(void* first, void* second);

// Where the plug-in's strlen and memset lead: those of the C library take different ways on different
// processors. The stubs write no text whose length could be told.
extern "C" __attribute__((visibility("default"))) size_t __wrap_strlen(const char*) {
  return kLength;
}

// Clears memory for real, in about as many steps as the C library.
extern "C" __attribute__((visibility("default"))) void* __wrap_memset(void* to, int value, size_t size) {
  typedef char Piece __attribute__((vector_size(16), aligned(1), may_alias));
  const Piece piece = Piece{} + static_cast<char>(value);
  char* at = static_cast<char*>(to);
  char* const end = at + size;
  const auto store = [piece](char* where) { *reinterpret_cast<Piece*>(where) = piece; };
  if (size < sizeof piece) {
    while (at < end) *const_cast<volatile char*>(at++) = static_cast<char>(value);
    return to;
  }
  for (; end - at > 64; at += 64) {
    store(at);
    store(at + 16);
    store(at + 32);
    store(at + 48);
  }
  for (; end - at > 16; at += 16) store(at);
  store(end - 16);
  return to;
}

void bzero(void* to, size_t size) {
  __wrap_memset(to, 0, size);
}

[[noreturn]] void fail(const std::string& what) {
  std::fprintf(stderr, "bench-calls: %s\n", what.c_str());
  std::exit(1);
}

template <typename Signature>
void* address(Signature* function) {
  return reinterpret_cast<void*>(function);
}

class Binary {
 public:
  explicit Binary(const char* path) {
    if (std::string(path).ends_with(".dylib")) {
      macho::LoadOptions options;
      options.lookup = [](const std::string& symbol) -> void* {
        if (symbol == "strlen") return address(__wrap_strlen);
        if (symbol == "memset") return address(__wrap_memset);
        if (symbol == "__bzero") return address(bzero);
        return nullptr;
      };
      image_.emplace(macho::load(path, options));
      return;
    }
    library_ = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!library_) fail(std::string(path) + ": " + dlerror());
  }

  // Null when it isn't exported.
  void* symbol(const std::string& name) const {
    return library_ ? dlsym(library_, name.c_str()) : image_->symbol(("_" + name).c_str());
  }

 private:
  void* library_ = nullptr;
  std::optional<macho::Image> image_;
};

struct Call {
  const char* name;
  const char* method;  // its declaration, or null
  const char* symbol;  // or an export
  void* first;
  void* second;
  void* attribute;  // what the item answers
};

void* number(intptr_t value) {
  return reinterpret_cast<void*>(value);
}

const Call kCalls[] = {
    {"ResultCount", "ResultCount as integer", nullptr, &query, nullptr, nullptr},
    {"ResultAtIndex", "ResultAtIndex(index as integer) as MDItemZNK", nullptr, &query, number(5), nullptr},
    {"AttributeString", "AttributeString(name as string) as string", nullptr, &item, &string, &cfString},
    {"GetAttribute", "GetAttribute(name as string) as variant", nullptr, &item, &string, &cfNumber},
    {"Results of 10", "Results(limit as integer = -1) as MDItemZNK()", nullptr, &query, number(10), nullptr},
    {"Results of 20", "Results(limit as integer = -1) as MDItemZNK()", nullptr, &query, number(20), nullptr},
    {"string to host", nullptr, "toVariant", &cfString, nullptr, nullptr},
    {"number to host", nullptr, "toVariant", &cfNumber, nullptr, nullptr},
    {"date to host", nullptr, "toVariant", &cfDate, nullptr, nullptr},
    {"array to host", nullptr, "toVariant", &cfArray, nullptr, nullptr},
    {"dictionary to host", nullptr, "toVariant", &cfDictionary, nullptr, nullptr},
    {"URL to host", nullptr, "toVariant", &cfURL, nullptr, nullptr},
    {"string to platform", nullptr, "toCF", &stringVariant, nullptr, nullptr},
    {"number to platform", nullptr, "toCF", &integerVariant, nullptr, nullptr},
    {"date to platform", nullptr, "toCF", &dateVariant, nullptr, nullptr},
    {"array to platform", nullptr, "toCF", &stringsVariant, nullptr, nullptr},
    {"dictionary to platform", nullptr, "toCF", &dictionaryVariant, nullptr, nullptr},
    {"URL to platform", nullptr, "toCF", &folderItemVariant, nullptr, nullptr},
};

const Call& callOf(const std::string& name) {
  for (const Call& call : kCalls) {
    if (call.name == name) return call;
  }
  fail("there is no call '" + name + "'");
}

// callgrind counts from where this begins to where it ends, and tells the sum each time. The two words are
// more than some of the functions take, which does no harm where the caller takes them back.
extern "C" __attribute__((noinline)) void* measured(Function* function, void* first, void* second) {
  void* const result = function(first, second);
  asm volatile("" ::: "memory");  // so that it doesn't end as a jump
  return result;
}

extern "C" __attribute__((naked)) void* empty(void*, void*) {
  asm("ret");
}

void begin(const std::string& name) {
  if constexpr (kNoted) std::fprintf(stderr, "# %s\n", name.c_str());
}

Function* function(void* found) {
  return reinterpret_cast<Function*>(found);
}

void run(const Binary& binary, const Call& call) {
  Function* const called = function(call.method ? methodOf(call.method) : binary.symbol(call.symbol));
  if (!called) fail(std::string("it has no ") + (call.method ? call.method : call.symbol));
  cfItem.data[0] = call.attribute;
  // The first call finds services.
  begin("preparation");
  called(call.first, call.second);
  begin(call.name);
  void* const result = measured(called, call.first, call.second);
  if constexpr (kNoted) note("returned", {result});
}

void runAll(const char* path, const std::vector<std::string>& calls) {
  const Binary binary(path);
  void* const start = binary.symbol("REALPluginMain");
  if (!start) fail(std::string(path) + " is no plug-in");
  measured(empty, nullptr, nullptr);
  begin("REALPluginMain");
  measured(function(start), address(resolveStartUp), nullptr);

  // Again, so that services are looked up by their names from now on.
  begin("preparation");
  function(start)(address(resolve), nullptr);
  if (void* const resolveServices = binary.symbol("resolveServices"))
    function(resolveServices)(address(resolve), nullptr);
  for (const std::string& call : calls) run(binary, callOf(call));
}

}  // namespace
}  // namespace bench::calls

int main(int argc, char** argv) {
  if (argc < 2) bench::calls::fail("name a plug-in");
  try {
    bench::calls::runAll(argv[1], {argv + 2, argv + argc});
  } catch (const macho::LoadError& error) {
    bench::calls::fail(error.what());
  }
}
