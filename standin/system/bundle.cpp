// Bundles: folders with an executable that has the folder's name without its extension. A library that was
// loaded stays loaded after the bundle is gone, because the pointers that were looked up in it stay in use.
#include <CoreFoundation/CoreFoundation.h>
#include <dlfcn.h>

#include <algorithm>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "standin/corefoundation/CFRuntime.h"
#include "standin/gate/gate.h"
#include "standin/system/control.h"
#include "standin/system/file_urls.h"
#include "standin/system/paths.h"

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

CFBundleRef mutableBundle(CFTypeRef cf) {
  return const_cast<CFBundleRef>(static_cast<const __CFBundle*>(cf));
}

void finalizeBundle(CFTypeRef cf) {
  mutableBundle(cf)->state.~BundleState();
}

const CFRuntimeClass kBundleClass = {0,       "CFBundle", nullptr, nullptr, finalizeBundle, nullptr,
                                     nullptr, nullptr,    nullptr, nullptr, nullptr};

CFTypeID bundleType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kBundleClass);
  return type;
}

BundleState& stateOf(const char* call, CFBundleRef bundle) {
  if (!bundle) standin::die(call, "the bundle is null");
  if (CFGetTypeID(bundle) != bundleType()) standin::die(call, "this is no bundle");
  return bundle->state;
}

std::string executableOf(const std::string& bundlePath) {
  const std::string name = bundlePath.substr(bundlePath.rfind('/') + 1);
  return bundlePath + '/' + name.substr(0, name.rfind('.'));
}

bool load(BundleState& bundle) {
  if (!bundle.library) bundle.library = ::dlopen(executableOf(bundle.path).c_str(), RTLD_NOW | RTLD_LOCAL);
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
  std::vector<char> text(
      static_cast<size_t>(CFStringGetMaximumSizeForEncoding(CFStringGetLength(name), kCFStringEncodingUTF8)) +
      1);
  if (!CFStringGetCString(name, text.data(), static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8)) {
    return nullptr;
  }
  const std::vector<std::string>& hidden = hiddenSymbols();
  if (std::find(hidden.begin(), hidden.end(), text.data()) != hidden.end()) return nullptr;
  return ::dlsym(state.library, text.data());
}

}  // namespace

void standin::hideSymbols(std::vector<std::string> names) {
  hiddenSymbols() = std::move(names);
}

CFTypeID CFBundleGetTypeID(void) {
  Gate gate{"CFBundleGetTypeID"};
  return bundleType();
}

CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef bundleURL) {
  Gate gate{"CFBundleCreate"};
  const std::optional<std::string> path = standin::pathOfURL("CFBundleCreate", bundleURL);
  if (gate.fails() || !path || !standin::isFolder(*path)) return nullptr;
  const CFIndex extraBytes = sizeof(__CFBundle) - sizeof(CFRuntimeBase);
  const CFTypeRef made = _CFRuntimeCreateInstance(allocator, bundleType(), extraBytes, nullptr);
  if (!made) return nullptr;
  const CFBundleRef bundle = mutableBundle(made);
  new (&bundle->state) BundleState{*path, nullptr};
  return bundle;
}

Boolean CFBundleLoadExecutable(CFBundleRef bundle) {
  Gate gate{"CFBundleLoadExecutable"};
  BundleState& state = stateOf("CFBundleLoadExecutable", bundle);
  return !gate.fails() && load(state);
}

void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef functionName) {
  constexpr const char* kCall = "CFBundleGetFunctionPointerForName";
  Gate gate{kCall};
  return find(kCall, bundle, functionName, gate.fails());
}

void* CFBundleGetDataPointerForName(CFBundleRef bundle, CFStringRef symbolName) {
  constexpr const char* kCall = "CFBundleGetDataPointerForName";
  Gate gate{kCall};
  return find(kCall, bundle, symbolName, gate.fails());
}
