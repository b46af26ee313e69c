// What the platform is given, argument by argument: this program is linked with --wrap for the functions
// below, so that they are seen on their way.
#include <ApplicationServices/ApplicationServices.h>
#include <CoreServices/CoreServices.h>

#include <dlfcn.h>

#include <algorithm>
#include <utility>

#include "bridge/cf_to_variant.h"
#include "bridge/folder_items.h"
#include "host/startup.h"
#include "query/query.h"
#include "tests/plugin/objects/fixture.h"

extern "C" void REALPluginMain(Resolver* resolver);

namespace {

struct Observation {
  CFNotificationCenterRef center;
  const void* observer;
  CFNotificationCallback callBack;
  CFStringRef name;
  const void* object;
  CFNotificationSuspensionBehavior behavior;
};

struct Creation {
  MDQueryRef parent;
  CFIndex valueLists, sorting;  // counts; -1 for a null array
};

std::vector<Observation> observations;
std::vector<const void*> removals;
std::vector<Creation> creations;
std::vector<CFOptionFlags> executions;
std::vector<CFIndex> maxCounts, indexes;
std::vector<std::string> folderSearches, lookedUp;

// An URL or a bundle that was made.
struct Made {
  CFAllocatorRef allocator;
  const void* result;
};
std::vector<Made> fromReferences, appended, bundles;
std::vector<std::string> names;  // that were appended
std::vector<const void*> released;
bool nextLengthIsNegative = false;  // as no string of the platform has one

struct Collection {
  CFAllocatorRef allocator;
  CFIndex capacity;
  std::vector<const void*> callBacks;
};
std::vector<Collection> arrays, dictionaries;

std::vector<CFNumberType> numberTypes;
std::vector<std::vector<CGFloat>> colors;

CFIndex countOf(CFArrayRef array) {
  return array ? CFArrayGetCount(array) : -1;
}

std::string utf8(CFStringRef text) {
  char buffer[200] = {};
  CFStringGetCString(text, buffer, sizeof buffer, kCFStringEncodingUTF8);
  return buffer;
}

}  // namespace

extern "C" {

void __real_CFNotificationCenterAddObserver(CFNotificationCenterRef, const void*, CFNotificationCallback,
                                            CFStringRef, const void*, CFNotificationSuspensionBehavior);
void __wrap_CFNotificationCenterAddObserver(CFNotificationCenterRef center, const void* observer,
                                            CFNotificationCallback callBack, CFStringRef name,
                                            const void* object, CFNotificationSuspensionBehavior behavior) {
  const auto instance = static_cast<REALobject>(const_cast<void*>(observer));
  EXPECT_EQ(object, queryData(instance)->query)
      << "the instance has its query from the first notification on";
  observations.push_back({center, observer, callBack, name, object, behavior});
  __real_CFNotificationCenterAddObserver(center, observer, callBack, name, object, behavior);
}

void __real_CFNotificationCenterRemoveEveryObserver(CFNotificationCenterRef, const void*);
void __wrap_CFNotificationCenterRemoveEveryObserver(CFNotificationCenterRef center, const void* observer) {
  removals.push_back(observer);
  __real_CFNotificationCenterRemoveEveryObserver(center, observer);
}

MDQueryRef __real_MDQueryCreate(CFAllocatorRef, CFStringRef, CFArrayRef, CFArrayRef);
MDQueryRef __wrap_MDQueryCreate(CFAllocatorRef allocator, CFStringRef text, CFArrayRef lists,
                                CFArrayRef sorting) {
  EXPECT_EQ(kCFAllocatorDefault, allocator);
  creations.push_back({nullptr, countOf(lists), countOf(sorting)});
  return __real_MDQueryCreate(allocator, text, lists, sorting);
}

MDQueryRef __real_MDQueryCreateSubset(CFAllocatorRef, MDQueryRef, CFStringRef, CFArrayRef, CFArrayRef);
MDQueryRef __wrap_MDQueryCreateSubset(CFAllocatorRef allocator, MDQueryRef parent, CFStringRef text,
                                      CFArrayRef lists, CFArrayRef sorting) {
  EXPECT_EQ(kCFAllocatorDefault, allocator);
  creations.push_back({parent, countOf(lists), countOf(sorting)});
  return __real_MDQueryCreateSubset(allocator, parent, text, lists, sorting);
}

Boolean __real_CFNumberGetValue(CFNumberRef, CFNumberType, void*);
Boolean __wrap_CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
  numberTypes.push_back(type);
  return __real_CFNumberGetValue(number, type, value);
}

CGColorRef __real_CGColorCreateGenericRGB(CGFloat, CGFloat, CGFloat, CGFloat);
CGColorRef __wrap_CGColorCreateGenericRGB(CGFloat red, CGFloat green, CGFloat blue, CGFloat alpha) {
  colors.push_back({red, green, blue, alpha});
  return __real_CGColorCreateGenericRGB(red, green, blue, alpha);
}

Boolean __wrap_MDQueryExecute(MDQueryRef, CFOptionFlags flags) {
  executions.push_back(flags);
  return true;
}

void __wrap_MDQuerySetMaxCount(MDQueryRef, CFIndex size) {
  maxCounts.push_back(size);
}

const void* __wrap_MDQueryGetResultAtIndex(MDQueryRef, CFIndex index) {
  indexes.push_back(index);
  return nullptr;
}

OSErr __real_FSFindFolder(FSVolumeRefNum, OSType, Boolean, FSRef*);
OSErr __wrap_FSFindFolder(FSVolumeRefNum domain, OSType type, Boolean create, FSRef* ref) {
  folderSearches.push_back(std::to_string(domain) + " " + std::to_string(type) + " " +
                           std::to_string(create));
  return __real_FSFindFolder(domain, type, create, ref);
}

CFURLRef __real_CFURLCreateFromFSRef(CFAllocatorRef, const FSRef*);
CFURLRef __wrap_CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* ref) {
  const CFURLRef url = __real_CFURLCreateFromFSRef(allocator, ref);
  fromReferences.push_back({allocator, url});
  return url;
}

CFURLRef __real_CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef, CFStringRef, Boolean);
CFURLRef __wrap_CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef folder,
                                                      CFStringRef name, Boolean isDirectory) {
  const CFURLRef url = __real_CFURLCreateCopyAppendingPathComponent(allocator, folder, name, isDirectory);
  appended.push_back({allocator, url});
  names.push_back(utf8(name) + (isDirectory ? "/" : ""));
  return url;
}

CFBundleRef __real_CFBundleCreate(CFAllocatorRef, CFURLRef);
CFBundleRef __wrap_CFBundleCreate(CFAllocatorRef allocator, CFURLRef url) {
  const CFBundleRef bundle = __real_CFBundleCreate(allocator, url);
  bundles.push_back({allocator, bundle});
  return bundle;
}

void __real_CFRelease(CFTypeRef);
void __wrap_CFRelease(CFTypeRef value) {
  released.push_back(value);
  __real_CFRelease(value);
}

CFIndex __real_CFStringGetLength(CFStringRef);
CFIndex __wrap_CFStringGetLength(CFStringRef text) {
  return std::exchange(nextLengthIsNegative, false) ? -1 : __real_CFStringGetLength(text);
}

CFMutableArrayRef __real_CFArrayCreateMutable(CFAllocatorRef, CFIndex, const CFArrayCallBacks*);
CFMutableArrayRef __wrap_CFArrayCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                              const CFArrayCallBacks* callBacks) {
  arrays.push_back({allocator, capacity, {callBacks}});
  return __real_CFArrayCreateMutable(allocator, capacity, callBacks);
}

CFMutableDictionaryRef __real_CFDictionaryCreateMutable(CFAllocatorRef, CFIndex,
                                                        const CFDictionaryKeyCallBacks*,
                                                        const CFDictionaryValueCallBacks*);
CFMutableDictionaryRef __wrap_CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                        const CFDictionaryKeyCallBacks* keyCallBacks,
                                                        const CFDictionaryValueCallBacks* valueCallBacks) {
  dictionaries.push_back({allocator, capacity, {keyCallBacks, valueCallBacks}});
  return __real_CFDictionaryCreateMutable(allocator, capacity, keyCallBacks, valueCallBacks);
}

void* __real_CFBundleGetFunctionPointerForName(CFBundleRef, CFStringRef);
void* __wrap_CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef name) {
  lookedUp.push_back(utf8(name));
  return __real_CFBundleGetFunctionPointerForName(bundle, name);
}

}  // extern "C"

namespace {

class PlatformArguments : public testing::Test {
 protected:
  void startPlugin(const host::Settings& settings = {}) {
    host::start(settings);
    REALPluginMain(host::resolve);
  }
  void TearDown() override { EXPECT_EQ(std::vector<std::string>(), host::stop()); }

  static const char* anything() { return "kMDItemFSName == \"*\""; }
  static MDQueryRef queryOf(const host::Value& object) {
    return reinterpret_cast<MDQueryRef>(static_cast<intptr_t>(host::get(object, "Handle").integer()));
  }
};

TEST_F(PlatformArguments, OfTheFolderSearchAreTheFrameworksOfTheAppropriateDiskCreated) {
  startPlugin();
  EXPECT_EQ(std::vector<std::string>{"-32767 1718772077 1"}, folderSearches);
  EXPECT_EQ(std::vector<std::string>{"CoreServices.framework"}, names);  // not marked as a directory
}

TEST_F(PlatformArguments, OfTheFrameworksURLsAndBundleAreTheSystemsAllocator) {
  startPlugin();
  for (const auto* made : {&fromReferences, &appended, &bundles}) {
    ASSERT_EQ(1u, made->size());
    EXPECT_NE(nullptr, made->front().allocator);
    EXPECT_EQ(kCFAllocatorSystemDefault, made->front().allocator);
  }
}

TEST_F(PlatformArguments, OfTheReleasesAreTheAppendedURLThenTheFolders) {
  startPlugin();
  ASSERT_EQ(1u, appended.size());
  ASSERT_EQ(1u, fromReferences.size());
  EXPECT_EQ((std::vector<const void*>{appended[0].result, fromReferences[0].result}), released);
}

TEST_F(PlatformArguments, OfTheReleasesAreFirstTheBundleWhoseExecutableCantBeLoaded) {
  standin::failCall("CFBundleLoadExecutable", 1);
  startPlugin();
  EXPECT_EQ(1, standin::failuresFired());
  standin::clearFailures();
  ASSERT_EQ(1u, bundles.size());
  ASSERT_EQ(1u, appended.size());
  ASSERT_EQ(1u, fromReferences.size());
  EXPECT_EQ((std::vector<const void*>{bundles[0].result, appended[0].result, fromReferences[0].result}),
            released);
}

TEST_F(PlatformArguments, OfAFolderItemsURLsAreTheDefaultAllocatorAndNoFolder) {
  startPlugin();
  fromReferences.clear();
  appended.clear();
  names.clear();
  const host::Value item = host::folderItem("/no such file");
  const auto url = CreateCFURLfromFolderItem(static_cast<REALobject>(item.handle()));
  EXPECT_TRUE(url);
  ASSERT_EQ(1u, fromReferences.size());
  ASSERT_EQ(1u, appended.size());
  EXPECT_EQ(kCFAllocatorDefault, fromReferences[0].allocator);
  EXPECT_EQ(kCFAllocatorDefault, appended[0].allocator);
  EXPECT_EQ(std::vector<std::string>{"no such file"}, names);
}

// Of a text, no more characters may be asked for than it has: that ends the process.
TEST_F(PlatformArguments, OfAMissingFilesNameOfNegativeLengthAreNoCharacters) {
  startPlugin();
  const host::Value missing = host::folderItem("/no such file");
  const auto url = CreateCFURLfromFolderItem(objectHandle(missing));
  ASSERT_TRUE(url);
  nextLengthIsNegative = true;
  const auto calls = callsOf([&] { EXPECT_TRUE(CFURL2RBVariant(url.get())); });
  EXPECT_EQ(1, std::count(calls.begin(), calls.end(), "CFStringGetCharacters"));
  EXPECT_FALSE(nextLengthIsNegative);
}

// Collections, by what they are made for

std::vector<CFIndex> capacitiesOf(const std::vector<Collection>& collections) {
  std::vector<CFIndex> capacities;
  for (const Collection& made : collections) capacities.push_back(made.capacity);
  return capacities;
}

// Of the default allocator, and keeping what is in them.
void expectKeepingArrays() {
  for (const Collection& made : arrays) {
    EXPECT_EQ(kCFAllocatorDefault, made.allocator);
    EXPECT_EQ(std::vector<const void*>{&kCFTypeArrayCallBacks}, made.callBacks);
  }
}

TEST_F(PlatformArguments, OfANewScopeAre20PlacesWhateverItsSize) {
  startPlugin();
  const host::Value query = host::construct("MDQueryZNK", anything());
  const host::Value folders = host::objectArray(std::vector<host::Value>(21, host::folderItem("/")));
  host::call(query, "SetSearchScope", nullptr, nullptr);
  host::call(query, "SetSearchScope", folders, host::stringArray({"kMDQueryScopeHome"}));
  EXPECT_EQ((std::vector<CFIndex>{20, 20}), capacitiesOf(arrays));
  expectKeepingArrays();
}

TEST_F(PlatformArguments, OfANewArrayOfStringsIsOnePlaceMoreThanItsElements) {
  startPlugin();
  host::construct("MDQueryZNK", anything(), host::stringArray({}), host::stringArray({"a", "b", "c", "d"}));
  EXPECT_EQ((std::vector<CFIndex>{1, 5}), capacitiesOf(arrays));
  expectKeepingArrays();
}

TEST_F(PlatformArguments, OfANewArrayOfValuesAreTheirNumber) {
  startPlugin();
  const host::Value query = host::construct("MDQueryZNK", anything());
  for (const host::Value& value : {host::int32Array({}), host::int32Array({1, 2, 3}),
                                   host::stringArray({"a"}), host::objectArray({1, host::Value()})}) {
    host::call(query, "CountOfResultsWithAttributeValue", "kMDItemFSSize", value);
  }
  EXPECT_EQ((std::vector<CFIndex>{0, 3, 1, 2}), capacitiesOf(arrays));
  expectKeepingArrays();
}

TEST_F(PlatformArguments, OfANewDictionaryAreTheNumberOfItsEntries) {
  startPlugin();
  const host::Value query = host::construct("MDQueryZNK", anything());
  for (const host::Value& value :
       {host::dictionary(), host::dictionary({{"a", 1}}), host::dictionary({{1, 2}, {2, 3}, {3, 4}})}) {
    host::call(query, "CountOfResultsWithAttributeValue", "kMDItemFSSize", value);
  }
  EXPECT_EQ((std::vector<CFIndex>{0, 1, 3}), capacitiesOf(dictionaries));
  for (const Collection& made : dictionaries) {
    EXPECT_EQ(kCFAllocatorDefault, made.allocator);
    EXPECT_EQ((std::vector<const void*>{&kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks}),
              made.callBacks);
  }
}

TEST_F(PlatformArguments, OfTheSortFunctionsAreTheirNamesInOrder) {
  startPlugin();
  EXPECT_EQ((std::vector<std::string>{"MDQueryGetSortOptionFlagsForAttribute",
                                      "MDQuerySetSortOptionFlagsForAttribute", "MDQuerySetSortOrder"}),
            lookedUp);
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "MDQueryGetSortOptionFlagsForAttribute"),
            reinterpret_cast<void*>(myMDQueryGetSortOptionFlagsForAttribute));
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "MDQuerySetSortOptionFlagsForAttribute"),
            reinterpret_cast<void*>(myMDQuerySetSortOptionFlagsForAttribute));
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "MDQuerySetSortOrder"), reinterpret_cast<void*>(myMDQuerySetSortOrder));
  EXPECT_NE(nullptr, myMDQuerySetSortOrder);
}

TEST_F(PlatformArguments, InTheDevelopmentEnvironmentTheSortFunctionsStayNullThoughTheSystemHasThem) {
  host::Settings settings;
  settings.inRuntime = false;
  startPlugin(settings);
  ASSERT_NE(nullptr, dlsym(RTLD_DEFAULT, "MDQuerySetSortOrder"));
  EXPECT_EQ(nullptr, myMDQueryGetSortOptionFlagsForAttribute);
  EXPECT_EQ(nullptr, myMDQuerySetSortOptionFlagsForAttribute);
  EXPECT_EQ(nullptr, myMDQuerySetSortOrder);
}

TEST_F(PlatformArguments, WithoutTheServiceThatTellsTheSortFunctionsStayNull) {
  host::Settings settings;
  settings.hidden = {"REALinRuntime"};
  startPlugin(settings);
  EXPECT_EQ(nullptr, myMDQuerySetSortOrder);
}

TEST_F(PlatformArguments, OfTheObserversAreTheInstanceItsQueryAndImmediateDelivery) {
  startPlugin();
  const void* instance = nullptr;
  {
    const host::Value query = host::construct("MDQueryZNK", anything());
    instance = query.handle();
    ASSERT_EQ(3u, observations.size());
    const CFStringRef names[] = {kMDQueryProgressNotification, kMDQueryDidUpdateNotification,
                                 kMDQueryDidFinishNotification};
    for (size_t i = 0; i < 3; ++i) {
      EXPECT_EQ(CFNotificationCenterGetLocalCenter(), observations[i].center);
      EXPECT_EQ(instance, observations[i].observer);
      EXPECT_EQ(&MyCallBack, observations[i].callBack);
      EXPECT_EQ(names[i], observations[i].name);
      EXPECT_EQ(queryOf(query), observations[i].object);
      EXPECT_EQ(4, observations[i].behavior);
    }
    EXPECT_TRUE(removals.empty());
  }
  EXPECT_EQ(std::vector<const void*>{instance}, removals);
}

TEST_F(PlatformArguments, OfACreationAreTheArraysOfItsFormAndNullForTheOthers) {
  startPlugin();
  const auto one = host::stringArray({"kMDItemFSName"});
  const auto none = host::stringArray({});
  const host::Value parent = host::construct("MDQueryZNK", anything());
  host::construct("MDQueryZNK", anything(), one);
  host::construct("MDQueryZNK", anything(), one, none);
  host::construct("MDQueryZNK", anything(), nullptr, one);
  host::construct("MDQueryZNK", parent, anything());
  host::construct("MDQueryZNK", parent, anything(), one);
  host::construct("MDQueryZNK", parent, anything(), none, one);
  const Creation expected[] = {
      {nullptr, -1, -1},         {nullptr, 1, -1},         {nullptr, 1, 0},         {nullptr, -1, 1},
      {queryOf(parent), -1, -1}, {queryOf(parent), 1, -1}, {queryOf(parent), 0, 1},
  };
  ASSERT_EQ(std::size(expected), creations.size());
  for (size_t i = 0; i < creations.size(); ++i) {
    EXPECT_EQ(expected[i].parent, creations[i].parent) << i;
    EXPECT_EQ(expected[i].valueLists, creations[i].valueLists) << i;
    EXPECT_EQ(expected[i].sorting, creations[i].sorting) << i;
  }
}

TEST_F(PlatformArguments, OfExecuteAreTheFlagsUnchanged) {
  startPlugin();
  const host::Value query = host::construct("MDQueryZNK", anything());
  for (const int32_t flags : {0, 1, 4, 5, 0x40000000, -1}) host::call(query, "Execute", flags);
  EXPECT_EQ((std::vector<CFOptionFlags>{0, 1, 4, 5, 0x40000000, 0xFFFFFFFF}), executions);
}

TEST_F(PlatformArguments, OfSetMaxCountAndResultAtIndexAreTheNumbersUnchecked) {
  startPlugin();
  const host::Value query = host::construct("MDQueryZNK", anything());
  for (const int32_t number : {0, 1, -1, INT32_MAX, INT32_MIN}) {
    host::call(query, "SetMaxCount", number);
    host::call(query, "ResultAtIndex", number);
  }
  EXPECT_EQ((std::vector<CFIndex>{0, 1, -1, INT32_MAX, INT32_MIN}), maxCounts);
  EXPECT_EQ(maxCounts, indexes);
}

TEST_F(PlatformArguments, OfANumberIsTheTypeThatItIsReadAs) {
  startPlugin();
  const auto typesOf = [](CFNumberType type, const void* value) {
    const auto number = adopt(CFNumberCreate(nullptr, type, value));
    numberTypes.clear();
    GetCFTypeAsVariant(number.get());
    return numberTypes;
  };
  const int32_t narrow = 7;
  const int64_t wide = int64_t{7} << 40;
  const double real = 0.5;
  EXPECT_EQ(std::vector<CFNumberType>{kCFNumberLongType}, typesOf(kCFNumberSInt32Type, &narrow));
  EXPECT_EQ(std::vector<CFNumberType>{kCFNumberLongLongType}, typesOf(kCFNumberSInt64Type, &wide));
  EXPECT_EQ(std::vector<CFNumberType>{kCFNumberDoubleType}, typesOf(kCFNumberFloat64Type, &real));
}

TEST_F(PlatformArguments, OfTheNumberOfATypeInTheSchemaIsAnInt) {
  startPlugin();
  const host::Value key("kMDItemFSSize");
  numberTypes.clear();
  EXPECT_EQ("Number", host::callShared("MDItemZNK", "AttributeType", key).text());
  EXPECT_EQ(std::vector<CFNumberType>{kCFNumberIntType}, numberTypes);
}

TEST_F(PlatformArguments, OfAColorAreItsComponentsAndAnAlphaOf1) {
  startPlugin();
  const host::Value query = host::construct("MDQueryZNK", anything());
  colors.clear();
  host::call(query, "CountOfResultsWithAttributeValue", "kMDItemFSSize", host::Value::color(0x7F3366CC));
  ASSERT_EQ(1u, colors.size());
  EXPECT_EQ((std::vector<CGFloat>{0x33 / 255.0f, 0x66 / 255.0f, 0xCC / 255.0f, 1}), colors[0]);
}

}  // namespace
