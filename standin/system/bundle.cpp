// Bundles: folders with an executable that has the folder's name without its extension. A library that was
// loaded stays loaded after the bundle is gone, because the pointers that were looked up in it stay in use.
#include <CoreFoundation/CoreFoundation.h>
#include <dlfcn.h>

#include <algorithm>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "standin/gate/gate.h"
#include "standin/system/control.h"
#include "standin/system/file_urls.h"
#include "standin/system/objects.h"
#include "standin/system/paths.h"
#include "standin/system/utf8.h"

namespace {

struct BundleState {
  std::string path;
  void* library = nullptr;
};

}  // namespace

struct __CFBundle {
  CFRuntimeBase base;
  BundleState state;
};

namespace {

using standin::Gate;

// Bundles whose library is loaded, which stay for the life of the process where their owner is gone: a
// plug-in whose file was closed can't release its own any more. The leak sanitizer looks for them at the very
// end.
std::set<const BundleState*>& loadedBundles() {
  static auto* const bundles = new std::set<const BundleState*>;
  return *bundles;
}

void finalizeBundle(CFTypeRef cf) {
  const BundleState& state = static_cast<const __CFBundle*>(cf)->state;
  loadedBundles().erase(&state);
  state.~BundleState();
}

const CFRuntimeClass kBundleClass = {.className = "CFBundle", .finalize = finalizeBundle};

CFTypeID bundleType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kBundleClass);
  return type;
}

BundleState& stateOf(const char* call, CFBundleRef bundle) {
  standin::checkObject(call, bundle, bundleType(), "bundle");
  return bundle->state;
}

std::string executableOf(const std::string& bundlePath) {
  const std::string name = bundlePath.substr(bundlePath.rfind('/') + 1);
  return bundlePath + '/' + name.substr(0, name.rfind('.'));
}

bool load(BundleState& bundle) {
  if (!bundle.library) bundle.library = ::dlopen(executableOf(bundle.path).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (bundle.library) loadedBundles().insert(&bundle);
  return bundle.library != nullptr;
}

std::vector<std::string>& hiddenSymbols() {
  static std::vector<std::string> names;
  return names;
}

// Looking a name up loads the executable first.
void* find(const char* call, CFBundleRef bundle, CFStringRef name, bool fails) {
  BundleState& state = stateOf(call, bundle);
  if (!name) standin::die(call, "the name is null");
  if (CFGetTypeID(name) != CFStringGetTypeID()) standin::die(call, "the name is no string");
  if (fails || !load(state)) return nullptr;
  const std::optional<std::string> symbol = standin::utf8Of(name);
  const std::vector<std::string>& hidden = hiddenSymbols();
  if (!symbol || std::find(hidden.begin(), hidden.end(), *symbol) != hidden.end()) return nullptr;
  return ::dlsym(state.library, symbol->c_str());
}

}  // namespace

void standin::hideSymbols(std::vector<std::string> names) {
  hiddenSymbols() = std::move(names);
}

CFTypeID CFBundleGetTypeID(void) {
  const Gate gate(__func__);
  return bundleType();
}

CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef bundleURL) {
  const Gate gate(__func__);
  const std::optional<std::string> path = standin::pathOfURL(__func__, bundleURL);
  if (gate.fails() || !path || !standin::isFolder(*path)) return nullptr;
  const CFBundleRef bundle = standin::makeObject<__CFBundle>(allocator, bundleType());
  if (bundle) new (&bundle->state) BundleState{*path, nullptr};
  return bundle;
}

Boolean CFBundleLoadExecutable(CFBundleRef bundle) {
  const Gate gate(__func__);
  BundleState& state = stateOf(__func__, bundle);
  return !gate.fails() && load(state);
}

void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef functionName) {
  const Gate gate(__func__);
  return find(__func__, bundle, functionName, gate.fails());
}

void* CFBundleGetDataPointerForName(CFBundleRef bundle, CFStringRef symbolName) {
  const Gate gate(__func__);
  return find(__func__, bundle, symbolName, gate.fails());
}
