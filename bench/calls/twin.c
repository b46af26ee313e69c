/* The least that the plug-in's methods can do: the calls that they must make, in the order in which they must
 * make them, with the same arguments and with buffers cleared where theirs are. bench-calls counts the
 * plug-in's instructions beside these. It is a plug-in as far as the rows need one: the same start-up,
 * classes with the rows' methods, and the conversions under the names by which
 * tests/plugin/bridge/exports.cpp exports them.
 *
 * What it keeps: the tests of what a call answered, where they decide which call comes next; the host's
 * version, which it announces; what a call told and a later one needs.
 *
 * Conversions keep the test for null, too, as what they convert is mostly the answer of a call.
 *
 * What it leaves out: the tests of what was there before the call (an instance without its item or query,
 * methods' arguments that are nil, a host of another version, services that are missing), so it finds all services at
 * once and calls them without looking; the ways that no row takes; the references' owners, and all that is
 * done when the host throws.
 *
 * It takes nothing from the project, so that nothing of that can be the reason why a row takes longer. */
#include <stddef.h>
#include <stdint.h>

#define EXPORT __attribute__((visibility("default")))

typedef void* Object;      /* of the host; strings, too */
typedef const void* Value; /* of Core Foundation */
typedef void* Resolver(const char* name);

/* The platform */

typedef struct {
  int32_t year;
  int8_t month, day, hour, minute;
  double second;
} GregorianDate;

typedef struct {
  uint8_t hidden[80];
} FSRef;

typedef struct {
  uint16_t length;
  uint16_t unicode[255];
} FileName;

typedef struct {
  uint32_t words1[2];
  uint32_t nodeID;
  uint32_t words2[33];
} CatalogInfo;

enum { kUTF8 = 0x08000100, kSInt32 = 3, kLong = 10, kLongLong = 11, kDouble = 13 };

extern Value kCFAllocatorDefault, kCFAllocatorSystemDefault, kCFNull;
extern const uint32_t kCFTypeArrayCallBacks[5], kCFTypeDictionaryKeyCallBacks[6],
    kCFTypeDictionaryValueCallBacks[5];

unsigned long CFGetTypeID(Value value);
unsigned long CFArrayGetTypeID(void), CFBooleanGetTypeID(void), CFDataGetTypeID(void), CFDateGetTypeID(void),
    CFDictionaryGetTypeID(void), CFNullGetTypeID(void), CFNumberGetTypeID(void), CFStringGetTypeID(void),
    CFURLGetTypeID(void);
Value CFRetain(Value value);
void CFRelease(Value value);
long CFArrayGetCount(Value array);
Value CFArrayGetValueAtIndex(Value array, long index);
Value CFArrayCreateMutable(Value allocator, long capacity, const void* callBacks);
void CFArrayAppendValue(Value array, Value value);
Value CFDictionaryCreateMutable(Value allocator, long capacity, const void* keyCallBacks,
                                const void* valueCallBacks);
void CFDictionarySetValue(Value dictionary, Value key, Value value);
void CFDictionaryApplyFunction(Value dictionary, void (*apply)(Value key, Value value, void* context),
                               void* context);
uint8_t CFNumberIsFloatType(Value number);
long CFNumberGetByteSize(Value number);
uint8_t CFNumberGetValue(Value number, long type, void* value);
Value CFNumberCreate(Value allocator, long type, const void* value);
long CFStringGetLength(Value string);
uint8_t CFStringGetCString(Value string, char* buffer, long size, uint32_t encoding);
Value __CFStringMakeConstantString(const char* text);
double CFDateGetAbsoluteTime(Value date);
GregorianDate CFAbsoluteTimeGetGregorianDate(double time, Value zone);
double CFGregorianDateGetAbsoluteTime(GregorianDate date, Value zone);
Value CFDateCreate(Value allocator, double time);
uint8_t CFURLGetFSRef(Value url, FSRef* file);
Value CFURLCreateFromFSRef(Value allocator, const FSRef* file);
Value CFURLCreateCopyAppendingPathComponent(Value allocator, Value url, Value component, uint8_t isFolder);
Value CFBundleCreate(Value allocator, Value url);
uint8_t CFBundleLoadExecutable(Value bundle);
void* CFBundleGetFunctionPointerForName(Value bundle, Value name);
short FSFindFolder(short volume, uint32_t type, uint8_t create, FSRef* folder);
short FSGetCatalogInfo(const FSRef* file, uint32_t which, CatalogInfo* info, FileName* name, void* spec,
                       FSRef* parent);
long MDQueryGetResultCount(Value query);
Value MDQueryGetResultAtIndex(Value query, long index);
Value MDItemCopyAttribute(Value item, Value key);

size_t strlen(const char* text);

/* The host's services */

typedef struct Class {
  uint32_t version;
  const char* name;
  uint32_t words1[1], dataSize, dataOffset, words2[4];
  const struct Method* methods;
  int32_t methodCount;
  uint32_t words3[9], flags, words4[8];
} Class;

typedef struct Method {
  void* function;
  void* setter;
  const char* declaration;
  uint32_t flags, newer[2];
} Method;

typedef void Insert(Object array, int32_t index, Object value);
typedef void Get(Object array, int32_t index, Object* value);
typedef void Set(Object array, Object value, int32_t index);

static Object (*newInstance)(const char* className);
static const void* (*classReference)(const char* className);
static _Bool (*isOfClass)(Object object, const void* reference);
static void (*unlockObject)(Object object);
static void (*unlockString)(Object string);
static Object (*buildString)(const char* bytes, int32_t length);
static void (*setStringEncoding)(Object string, uint32_t encoding);
static Value (*copyCFString)(Object string, _Bool external);
static _Bool (*getInteger)(Object object, const char* name, int32_t* value);
static void (*setInteger)(Object object, const char* name, int32_t value);
static Object (*newStringVariant)(Object string);
static Object (*newIntegerVariant)(int32_t value);
static Object (*newWideVariant)(int64_t value);
static Object (*newRealVariant)(double value);
static int32_t (*variantType)(Object variant);
static int32_t (*variantInteger)(Object variant);
static Object (*variantString)(Object variant);
static Object (*createArray)(int32_t elements, int32_t upperBound);
static int32_t (*upperBoundOf)(Object array);
static Insert* (*insertProcedure)(Object array);
static Get* (*getProcedure)(Object array);
static Set* (*setProcedure)(Object array);
static void* (*objectMethod)(Object object, const char* declaration);
static _Bool (*fileOfFolderItem)(Object item, FSRef* file, FileName* name);
static Object (*folderItemIn)(const FSRef* parent, const FileName* name);

/* The plug-in finds each of them when it is first used. */
EXPORT void resolveServices(Resolver* resolve) {
  newInstance = resolve("PluginNewInstance");
  classReference = resolve("pluginObjectType");
  isOfClass = resolve("RuntimeObjectIsa");
  unlockObject = resolve("REALUnlockObject");
  unlockString = resolve("REALUnlockString");
  buildString = resolve("REALBuildString");
  setStringEncoding = resolve("REALSetStringEncoding");
  copyCFString = resolve("REALGetStringCFString");
  getInteger = resolve("REALGetPropValueInt");
  setInteger = resolve("REALSetPropValueInt");
  newStringVariant = resolve("StringToVariant");
  newIntegerVariant = resolve("Int32ToVariant");
  newWideVariant = resolve("Int64ToVariant");
  newRealVariant = resolve("DoubleToVariant");
  variantInteger = resolve("VariantToInt32");
  variantString = resolve("VariantToString");
  createArray = resolve("RuntimeArrayCreateSingleDimBoundedArray");
  upperBoundOf = resolve("RuntimeUBound");
  insertProcedure = resolve("RuntimeArrayDirectGetInsertProc");
  getProcedure = resolve("RuntimeArrayDirectGetGetProc");
  setProcedure = resolve("RuntimeArrayDirectGetSetProc");
  objectMethod = resolve("REALLoadObjectMethod");
  fileOfFolderItem = resolve("REALFSRefFromFolderItem");
  folderItemIn = resolve("REALFolderItemFromParentFSRef");
  void* (*const function)(Object null, const char* declaration) = resolve("REALLoadGlobalMethod");
  variantType = function(NULL, "VarType(value As Variant) As Int32");
}

/* Instances */

static Class itemClass, queryClass;

static Value* dataOf(Object instance, const Class* definition) {
  return (Value*)((char*)instance + definition->dataOffset);
}

static Object newItem(Value item) {
  const Object object = newInstance("MDItemZNK");
  if (object) *dataOf(object, &itemClass) = CFRetain(item);
  return object;
}

/* Strings */

static Value cfString(Object string) {
  if (!string) return NULL;
  const Value text = copyCFString(string, 0);
  return text ? text : copyCFString(string, 0);
}

static Object hostString(Value text) {
  const long length = CFStringGetLength(text);
  if (length <= 0 || length > 99) return NULL;
  char buffer[601] = {0};
  if (!CFStringGetCString(text, buffer, 600, kUTF8)) return NULL;
  const size_t size = strlen(buffer);
  if (size == 0) return NULL;
  const Object string = buildString(buffer, (int32_t)size);
  if (string) setStringEncoding(string, kUTF8);
  return string;
}

/* To the host */

static Object hostValue(Value value);

static Object stringToHost(Value text) {
  const Object string = hostString(text);
  const Object variant = newStringVariant(string);
  if (string) unlockString(string);
  return variant;
}

static Object numberToHost(Value number) {
  double real = 0;
  if (CFNumberIsFloatType(number) && CFNumberGetValue(number, kDouble, &real)) return newRealVariant(real);
  int32_t integer = 0;
  if (CFNumberGetByteSize(number) <= 4 && CFNumberGetValue(number, kLong, &integer))
    return newIntegerVariant(integer);
  int64_t wide = 0;
  return CFNumberGetValue(number, kLongLong, &wide) ? newWideVariant(wide) : NULL;
}

static Object dateToHost(Value value) {
  const GregorianDate fields = CFAbsoluteTimeGetGregorianDate(CFDateGetAbsoluteTime(value), NULL);
  const Object date = newInstance("Date");
  if (!date) return NULL;
  setInteger(date, "Year", fields.year);
  setInteger(date, "Month", fields.month);
  setInteger(date, "Day", fields.day);
  setInteger(date, "Hour", fields.hour);
  setInteger(date, "Minute", fields.minute);
  setInteger(date, "Second", (int32_t)fields.second);
  return date;
}

static Object arrayToHost(Value values) {
  const long count = CFArrayGetCount(values);
  const Object array = createArray(4, (int32_t)count - 1);
  if (!array) return NULL;
  for (long i = 0; i < count; ++i) {
    const Object element = hostValue(CFArrayGetValueAtIndex(values, i));
    Set* const set = setProcedure(array);
    if (set) set(array, element, (int32_t)i);
    if (element) unlockObject(element);
  }
  return array;
}

/* Those of the last dictionary that was looked at. */
static Object lastDictionary;
static void (*setEntry)(Object dictionary, Object key, Object value);
static Object (*entryOf)(Object dictionary, Object key);
static Object (*keyAt)(Object dictionary, int32_t index);

static void findMethods(Object dictionary) {
  if (dictionary == lastDictionary) return;
  lastDictionary = dictionary;
  setEntry = objectMethod(dictionary, "Value(key As Variant, Assigns _value As Variant)");
  entryOf = objectMethod(dictionary, "Value(key As Variant) As Variant");
  keyAt = objectMethod(dictionary, "Key(index As Integer) As Variant");
}

static void entryToHost(Value key, Value value, void* dictionary) {
  if (!key) return;
  const Object hostEntry = hostValue(value);
  const Object hostKey = hostValue(key);
  findMethods(dictionary);
  if (setEntry) setEntry(dictionary, hostKey, hostEntry);
  if (hostKey) unlockObject(hostKey);
  if (hostEntry) unlockObject(hostEntry);
}

static Object dictionaryToHost(Value values) {
  const Object dictionary = newInstance("Dictionary");
  if (!dictionary) return NULL;
  CFDictionaryApplyFunction(values, entryToHost, dictionary);
  lastDictionary = NULL;
  return dictionary;
}

static Object urlToHost(Value url) {
  FSRef file, parent;
  CatalogInfo info;
  FileName name;
  if (!CFURLGetFSRef(url, &file)) return NULL;
  if (FSGetCatalogInfo(&file, 0x10, &info, NULL, NULL, &parent) != 0 || info.nodeID == 2) return NULL;
  if (FSGetCatalogInfo(&file, 0, NULL, &name, NULL, NULL) != 0) return NULL;
  if (FSGetCatalogInfo(&parent, 0, NULL, NULL, NULL, NULL) != 0) return NULL;
  return folderItemIn(&parent, &name);
}

static Object hostValue(Value value) {
  if (!value || value == kCFNull) return NULL;
  const unsigned long type = CFGetTypeID(value);
  if (type == CFURLGetTypeID()) return urlToHost(value);
  if (type == CFBooleanGetTypeID()) return NULL; /* in no row */
  if (type == CFNumberGetTypeID()) return numberToHost(value);
  if (type == CFArrayGetTypeID()) return arrayToHost(value);
  if (type == CFNullGetTypeID()) return NULL;
  if (type == CFDictionaryGetTypeID()) return dictionaryToHost(value);
  if (type == CFStringGetTypeID()) return stringToHost(value);
  if (type == CFDataGetTypeID()) return NULL; /* in no row */
  if (type == CFDateGetTypeID()) return dateToHost(value);
  return NULL;
}

EXPORT Object toVariant(Value value) {
  return hostValue(value);
}

/* To the platform */

static Value cfValue(Object variant);

static Value textOrEmpty(Object string) {
  const Value text = cfString(string);
  return text ? text : CFRetain(__CFStringMakeConstantString(""));
}

static Value stringToCF(Object variant) {
  const Object string = variantString(variant);
  const Value text = textOrEmpty(string);
  if (string) unlockString(string);
  return text;
}

static Value numberToCF(Object variant) {
  const int32_t value = variantInteger(variant);
  return CFNumberCreate(kCFAllocatorDefault, kSInt32, &value);
}

static Value dateToCF(Object date) {
  int32_t year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  if (!getInteger(date, "Year", &year) || !getInteger(date, "Month", &month) ||
      !getInteger(date, "Day", &day) || !getInteger(date, "Hour", &hour) ||
      !getInteger(date, "Minute", &minute) || !getInteger(date, "Second", &second)) {
    return NULL;
  }
  const GregorianDate fields = {year, (int8_t)month, (int8_t)day, (int8_t)hour, (int8_t)minute, second};
  return CFDateCreate(kCFAllocatorDefault, CFGregorianDateGetAbsoluteTime(fields, NULL));
}

static Value stringsToCF(Object array) {
  const int32_t upperBound = upperBoundOf(array);
  const Value values = CFArrayCreateMutable(kCFAllocatorDefault, upperBound + 1, kCFTypeArrayCallBacks);
  if (!values) return NULL;
  for (int32_t i = 0; i <= upperBound; ++i) {
    Object string = NULL;
    Get* const get = getProcedure(array);
    if (get) get(array, i, &string);
    const Value text = textOrEmpty(string);
    CFArrayAppendValue(values, text);
    CFRelease(text);
    if (string) unlockString(string);
  }
  return values;
}

static void entryToCF(Object dictionary, int32_t index, Value entries) {
  findMethods(dictionary);
  const Object key = keyAt ? keyAt(dictionary, index) : NULL;
  findMethods(dictionary);
  const Object value = entryOf ? entryOf(dictionary, key) : NULL;
  if (key) {
    const Value cfKey = cfValue(key), cfEntry = cfValue(value);
    CFDictionarySetValue(entries, cfKey ? cfKey : kCFNull, cfEntry ? cfEntry : kCFNull);
    if (cfEntry) CFRelease(cfEntry);
    if (cfKey) CFRelease(cfKey);
    unlockObject(key);
  }
  if (value) unlockObject(value);
}

static Value dictionaryToCF(Object dictionary) {
  int32_t count = 0;
  if (!getInteger(dictionary, "Count", &count)) count = 0;
  const Value entries = CFDictionaryCreateMutable(kCFAllocatorDefault, count, kCFTypeDictionaryKeyCallBacks,
                                                  kCFTypeDictionaryValueCallBacks);
  if (!entries) return NULL;
  for (int32_t i = 0; i < count; ++i) entryToCF(dictionary, i, entries);
  lastDictionary = NULL;
  return entries;
}

static Value urlToCF(Object item) {
  FSRef file;
  return fileOfFolderItem(item, &file, NULL) ? CFURLCreateFromFSRef(kCFAllocatorDefault, &file) : NULL;
}

static _Bool isA(Object object, const char* className) {
  const void* const reference = classReference(className);
  return reference && isOfClass(object, reference);
}

static Value objectToCF(Object object) {
  if (isA(object, "MemoryBlock")) return NULL; /* in no row */
  if (objectMethod(object, "TrueItem(Index as integer) as Folderitem")) return urlToCF(object);
  if (isA(object, "Dictionary")) return dictionaryToCF(object);
  return NULL;
}

static Value cfValue(Object variant) {
  if (!variant) return NULL;
  switch (variantType(variant)) {
    case 2:
      return numberToCF(variant);
    case 7:
      return dateToCF(variant);
    case 9:
      return objectToCF(variant);
    case 4104:
      return stringsToCF(variant);
    case 0:
    case 3:
    case 4:
    case 5:
    case 6:
    case 11:
    case 16: /* in no row */
    case 4098:
    case 4099:
    case 4100:
    case 4101:
    case 4103:
    case 4105:
    case 4107:
      return NULL;
    default:
      return stringToCF(variant);
  }
}

EXPORT Value toCF(Object variant) {
  return cfValue(variant);
}

/* Methods */

static int32_t resultCount(Object self) {
  return MDQueryGetResultCount(*dataOf(self, &queryClass));
}

static Object resultAtIndex(Object self, int32_t index) {
  const Value item = MDQueryGetResultAtIndex(*dataOf(self, &queryClass), index);
  return item ? newItem(item) : NULL;
}

static Object results(Object self, int32_t limit) {
  const Object array = createArray(4, -1);
  const Value query = *dataOf(self, &queryClass);
  const long total = MDQueryGetResultCount(query);
  const long count = limit > 0 && limit < total ? limit : total;
  for (long i = 0; i < count; ++i) {
    const Value item = MDQueryGetResultAtIndex(query, i);
    const Object object = item ? newItem(item) : NULL;
    Insert* const insert = insertProcedure(array);
    if (insert) insert(array, (int32_t)i, object);
    if (object) unlockObject(object);
  }
  return array;
}

static Object attribute(Object self, Object name) {
  const Value key = cfString(name);
  if (!key) return NULL;
  const Value value = MDItemCopyAttribute(*dataOf(self, &itemClass), key);
  const Object variant = hostValue(value);
  if (value) CFRelease(value);
  CFRelease(key);
  return variant;
}

static Object attributeString(Object self, Object name) {
  const Value key = cfString(name);
  if (!key) return NULL;
  Object string = NULL;
  const Value value = MDItemCopyAttribute(*dataOf(self, &itemClass), key);
  if (value) {
    if (CFGetTypeID(value) == CFStringGetTypeID()) string = hostString(value); /* else it raises */
    CFRelease(value);
  }
  CFRelease(key);
  return string;
}

/* Start-up */

static const Method itemMethods[] = {
    {attribute, NULL, "GetAttribute(name as string) as variant", 4, {0}},
    {attributeString, NULL, "AttributeString(name as string) as string", 4, {0}},
};

static const Method queryMethods[] = {
    {resultAtIndex, NULL, "ResultAtIndex(index as integer) as MDItemZNK", 4, {0}},
    {results, NULL, "Results(limit as integer = -1) as MDItemZNK()", 4, {0}},
    {resultCount, NULL, "ResultCount as integer", 4, {0}},
};

static const Method globalMethod = {NULL, NULL, "ShotlightZNK(searchString as string) as integer", 4, {0}};

/* Of the sizes to which the host's records are rounded. */
static Class itemClass = {
    .name = "MDItemZNK", .dataSize = 16, .methods = itemMethods, .methodCount = 2, .flags = 4};
static Class queryClass = {
    .name = "MDQueryZNK", .dataSize = 16, .methods = queryMethods, .methodCount = 3, .flags = 4};
static Class batchingClass = {.name = "MDQueryBatchingParamsZNK", .dataSize = 32, .flags = 4};

static Value framework;
static void *sortFlags, *setSortFlags, *setSortOrder;

static Value loadFramework(void) {
  FSRef frameworks;
  if (FSFindFolder(-32767, 0x6672616D, 1, &frameworks) != 0) return NULL;
  const Value folder = CFURLCreateFromFSRef(kCFAllocatorSystemDefault, &frameworks);
  if (!folder) return NULL;
  Value bundle = NULL;
  const Value url = CFURLCreateCopyAppendingPathComponent(
      kCFAllocatorSystemDefault, folder, __CFStringMakeConstantString("CoreServices.framework"), 0);
  if (url) {
    bundle = CFBundleCreate(kCFAllocatorSystemDefault, url);
    if (bundle && !CFBundleLoadExecutable(bundle)) {
      CFRelease(bundle);
      bundle = NULL;
    }
    CFRelease(url);
  }
  CFRelease(folder);
  return bundle;
}

static void findSortFunctions(void) {
  framework = loadFramework();
  if (!framework) return;
  sortFlags = CFBundleGetFunctionPointerForName(
      framework, __CFStringMakeConstantString("MDQueryGetSortOptionFlagsForAttribute"));
  setSortFlags = CFBundleGetFunctionPointerForName(
      framework, __CFStringMakeConstantString("MDQuerySetSortOptionFlagsForAttribute"));
  setSortOrder =
      CFBundleGetFunctionPointerForName(framework, __CFStringMakeConstantString("MDQuerySetSortOrder"));
}

static void registerAs(Class* definition, uint32_t version, void (*registerClass)(Class* definition)) {
  definition->version = version;
  registerClass(definition);
}

EXPORT void REALPluginMain(Resolver* resolve) {
  void (*const registerVersion)(uint32_t version) = resolve("RegisterPluginVersion");
  double (*const hostVersion)(void) = resolve("REALGetRBVersion");
  const double host = hostVersion ? hostVersion() : 0;
  const uint32_t version = host >= 2013.03 ? 12 : host >= 2013.0 ? 11 : host >= 2012.0 ? 10 : 9;
  registerVersion(version);
  _Bool (*const inRuntime)(void) = resolve("REALinRuntime");
  if (inRuntime && inRuntime()) findSortFunctions();
  void (*const registerClass)(Class * definition) = resolve("PluginRegisterClass");
  if (registerClass) {
    registerAs(&itemClass, version, registerClass);
    registerAs(&queryClass, version, registerClass);
    registerAs(&batchingClass, version, registerClass);
  }
  void (*const registerMethod)(const Method* method) = resolve("PluginRegisterMethod");
  if (registerMethod) registerMethod(&globalMethod);
}
