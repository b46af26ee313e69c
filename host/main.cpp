// The plug-in's entry point: what it exports, and all that it does at start-up.
#include <CoreServices/CoreServices.h>

#include "owned.h"
#include "registration.h"
#include "services.h"
#include "startup.h"

Resolver* gResolver = nullptr;
double rbversion = 0.0;
int32_t CurrentREALControlVersion = 12;

uint32_t (*myMDQueryGetSortOptionFlagsForAttribute)(MDQueryRef, CFStringRef) = nullptr;
Boolean (*myMDQuerySetSortOptionFlagsForAttribute)(MDQueryRef, CFStringRef, uint32_t) = nullptr;
Boolean (*myMDQuerySetSortOrder)(MDQueryRef, CFArrayRef) = nullptr;

namespace {

// Kept loaded for the life of the process: the sort functions are in it.
CFBundleRef CoreServicesFramework = nullptr;

int32_t controlVersionOf(double version) {
  if (version >= 2013.03) return 12;
  if (version >= 2013.0) return 11;
  if (version >= 2012.0) return 10;
  return 9;
}

CFBundleRef loadCoreServices() {
  FSRef frameworks;
  if (FSFindFolder(kOnAppropriateDisk, kFrameworksFolderType, true, &frameworks) != noErr) return nullptr;
  const auto folder = adopt(CFURLCreateFromFSRef(kCFAllocatorSystemDefault, &frameworks));
  if (!folder) return nullptr;
  const auto url = adopt(CFURLCreateCopyAppendingPathComponent(kCFAllocatorSystemDefault, folder.get(),
                                                               CFSTR("CoreServices.framework"), false));
  if (!url) return nullptr;
  auto bundle = adopt(CFBundleCreate(kCFAllocatorSystemDefault, url.get()));
  return bundle && CFBundleLoadExecutable(bundle.get()) ? bundle.leak() : nullptr;
}

template <typename Function>
void lookUp(Function*& function, CFStringRef name) {
  function = reinterpret_cast<Function*>(CFBundleGetFunctionPointerForName(CoreServicesFramework, name));
}

void loadSortFunctions() {
  CoreServicesFramework = loadCoreServices();
  if (!CoreServicesFramework) return;
  lookUp(myMDQueryGetSortOptionFlagsForAttribute, CFSTR("MDQueryGetSortOptionFlagsForAttribute"));
  lookUp(myMDQuerySetSortOptionFlagsForAttribute, CFSTR("MDQuerySetSortOptionFlagsForAttribute"));
  lookUp(myMDQuerySetSortOrder, CFSTR("MDQuerySetSortOrder"));
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void REALPluginMain(Resolver* resolver) {
  gResolver = resolver;
  // A host without this service is not supported, so its address is not checked.
  const auto registerPluginVersion = reinterpret_cast<void (*)(int32_t)>(resolver("RegisterPluginVersion"));
  if (const auto version = reinterpret_cast<double (*)()>(resolver("REALGetRBVersion")))
    rbversion = version();
  CurrentREALControlVersion = controlVersionOf(rbversion);
  registerPluginVersion(CurrentREALControlVersion);

  // In the development environment the query's sort methods answer as on a system without these functions.
  if (REALinRuntime()) loadSortFunctions();

  // The item class comes first: declarations of the query class name it.
  MyREALRegisterClass(&MDItemClass);
  MyREALRegisterClass(&MDQueryClass);
  MyREALRegisterClass(&MDQueryBatchingParamsClass);
  REALRegisterMethod(SpotlightSharedMethods);
}
