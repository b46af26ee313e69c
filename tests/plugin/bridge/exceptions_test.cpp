// Host services that throw in the middle of a conversion: the exception comes out as it was thrown, what the
// conversion held is given back, and no dictionary is remembered. Every call that a conversion makes of the
// host throws in its turn.
#include <algorithm>
#include <functional>
#include <map>

#include "tests/plugin/bridge/rows.h"

namespace {

struct Subject {
  std::string name;
  std::vector<std::string> wrapperClasses;  // that the host is to have
  std::function<CFOwner()> value;           // to become a variant, or
  std::function<host::Value()> variant;     // to become a CF value
  bool onOneHost = false;                   // where it matters nothing which host it is
};
void PrintTo(const Subject& subject, std::ostream* out) {
  *out << subject.name;
}

typedef std::vector<host::Settings> Hosts;

// Hosts that lend their strings and arrays in different ways.
Hosts hosts() {
  host::Settings direct;
  direct.version = 2013.9;
  host::Settings bytesOnly;
  bytesOnly.hidden = {"REALGetStringCFString"};
  return {host::Settings(), direct, bytesOnly, host::oldHost()};
}

// Services by which the plug-in gives back. What one of them throws for stays with the plug-in.
const std::set<std::string> kGivingBack = {"REALUnlockObject", "REALUnlockString", "PluginDisposeStringData"};

// A call of the host, that is, and no request for one; all others are of the platform.
bool isOfHost(const std::string& call) {
  static const std::vector<std::string> names = host::entryPointNames();
  static const std::set<std::string> others = {
      "VarType", "LenB", "array get", "array set", "Dictionary get", "Dictionary set", "Dictionary key"};
  return others.count(call) != 0 || std::find(names.begin(), names.end(), call) != names.end();
}

// References, and bytes of strings.
long heldByPlugin() {
  long held = 0;
  for (const auto& [kind, count] : standin::ledger()) {
    if (kind.ends_with(" lock") || kind == "host string data") held += count;
  }
  return held;
}

typedef std::map<std::string, int> Counts;

// How often each call of the host is among them.
Counts hostCallsIn(const Calls& calls) {
  Counts counts;
  for (const std::string& call : calls) {
    if (isOfHost(call)) ++counts[call];
  }
  return counts;
}

class Throwing : public BridgeTest, public testing::WithParamInterface<Subject> {
 protected:
  void startWithClasses(const host::Settings& settings) {
    start(settings);
    for (const std::string& name : GetParam().wrapperClasses) host::addWrapperClass(name, true);
  }

  // The conversion, with a plan to be made just before; the calls that it made.
  Calls convert(const std::function<void()>& plan) {
    return GetParam().value ? convertToVariant(plan) : convertToCF(plan);
  }

  // Each call of that name, of which there are so many, throws in its turn.
  void expectAllPassThrough(const std::string& name, int count) {
    for (int nth = 1; nth <= count; ++nth) expectPassesThrough(name, nth);
  }
  void expectPassesThrough(const std::string& name, int nth) {
    SCOPED_TRACE(name + " " + std::to_string(nth));
    const long before = heldByPlugin();
    EXPECT_THROW(convert([&] { standin::throwFromCall(name.c_str(), nth); }), standin::PlannedException);
    EXPECT_EQ(1, standin::failuresFired());
    EXPECT_EQ(kGivingBack.count(name) ? 1 : 0, heldByPlugin() - before);
    EXPECT_EQ(nullptr, lastDictionary());
  }

 private:
  Calls convertToVariant(const std::function<void()>& plan) {
    const CFOwner value = GetParam().value();
    plan();
    standin::startLog();
    void* const result = toVariantAlone(value.get());
    const Calls calls = standin::stopLog();
    fromPlugin(result);
    return calls;
  }
  Calls convertToCF(const std::function<void()>& plan) {
    const host::Value value = GetParam().variant();
    const Variant variant(value);
    plan();
    standin::startLog();
    const CFOwner result = own(toCFAlone(variant));
    return standin::stopLog();
  }
};

// The first conversion of a plug-in makes calls that later ones don't; those throw in a plug-in of their own.
TEST_P(Throwing, FromAnyCallPassesThroughAndNothingIsKept) {
  for (const host::Settings& settings : GetParam().onOneHost ? Hosts{host::Settings()} : hosts()) {
    SCOPED_TRACE("host " + std::to_string(settings.version));
    startWithClasses(settings);
    const Counts first = hostCallsIn(convert([] {})), later = hostCallsIn(convert([] {}));
    for (const auto& [name, count] : later) {
      if (!kGivingBack.count(name)) expectAllPassThrough(name, count);
    }
    TearDown();
    startWithClasses(settings);
    convert([] {});
    for (const auto& [name, count] : later) {
      if (kGivingBack.count(name)) expectAllPassThrough(name, count);
    }
    host::stop();  // with what the plug-in could not give back
    TearDown();
    for (const auto& [name, count] : first) {
      const auto again = later.find(name);
      if (again != later.end() && again->second == count) continue;
      for (int nth = 1; nth <= count; ++nth) {
        startWithClasses(settings);
        expectPassesThrough(name, nth);
        if (kGivingBack.count(name)) host::stop();
        TearDown();
      }
    }
    // CFNull is the only value for which the host is not needed.
    EXPECT_EQ(GetParam().name == "row 5, nil", first.empty());
  }
}

std::vector<Subject> subjectsOfRows() {
  std::vector<Subject> subjects;
  for (const Row& row : rows()) {
    Subject subject{testing::PrintToString(row), {}, row.make, {}, true};
    const bool wraps = row.treatment == Treatment::plain || row.treatment == Treatment::checked;
    if (wraps) subject.wrapperClasses = {row.className};
    subjects.push_back(std::move(subject));
  }
  return subjects;
}
INSTANTIATE_TEST_SUITE_P(Rows, Throwing, testing::ValuesIn(swept(subjectsOfRows())));

CFOwner url(const char* address) {
  return own(CFURLCreateWithString(nullptr, static_cast<CFStringRef>(cfText(address).get()), nullptr));
}

const std::vector<Subject> kOtherValues = {
    {"the URL of a missing file", {}, [] { return url("file:///usr/there%20is%20none"); }, {}},
    {"the URL of a volume", {}, [] { return url("file:///"); }, {}},
    {"the URL of a page", {}, [] { return url("http://example.com/"); }, {}},
    {"a 64-bit number", {}, [] { return cfInt64(7); }, {}},
    {"a real number", {}, [] { return cfReal(0.5); }, {}},
    {"a long text", {}, [] { return cfText(std::string(200, 'x')); }, {}},
    {"an array of texts",
     {},
     [] {
       return cfArray({CFSTR("one"), CFSTR("two"), CFSTR("three")});
     },
     {}},
    {"a dictionary in a dictionary",
     {},
     [] {
       const CFOwner inner = cfDictionary({{CFSTR("key"), CFSTR("value")}});
       return cfDictionary({{CFSTR("one"), inner.get()}, {CFSTR("two"), CFSTR("value")}});
     },
     {}},
    {"a wrapper without its class", {"CFObjectZNK"}, [] { return own(CFUUIDCreate(nullptr)); }, {}},
};
INSTANTIATE_TEST_SUITE_P(Values, Throwing, testing::ValuesIn(swept(kOtherValues)));

host::Value wrapperOf(const char* className) {
  host::Value wrapper = host::newInstance(className);
  host::setWrapped(wrapper, own(CFUUIDCreate(nullptr)).leak());
  return wrapper;
}

const std::vector<Subject> kVariants = {
    {"nil of a variant", {}, {}, [] { return host::variantOfType(0, ""); }},
    {"Int32", {}, {}, [] { return host::Value(7); }},
    {"Int64", {}, {}, [] { return host::Value(int64_t{7}); }},
    {"Single", {}, {}, [] { return host::Value(0.5f); }},
    {"Double", {}, {}, [] { return host::Value(0.5); }},
    {"Currency", {}, {}, [] { return host::variantOfType(6, "2.5"); }},
    {"Date", {}, {}, [] { return host::date(2001, 1, 1); }},
    {"String", {}, {}, [] { return host::Value("text"); }},
    {"Boolean", {}, {}, [] { return host::Value(true); }},
    {"Color", {}, {}, [] { return host::Value::color(0xFF8000); }},
    {"array of Int32",
     {},
     {},
     [] {
       return host::int32Array({1, 2});
     }},
    {"array of Int64",
     {},
     {},
     [] {
       return host::int64Array({1, 2});
     }},
    {"array of Single",
     {},
     {},
     [] {
       return host::singleArray({1, 2});
     }},
    {"array of Double",
     {},
     {},
     [] {
       return host::doubleArray({1, 2});
     }},
    {"array of Date",
     {},
     {},
     [] {
       return host::dateArray({host::date(2001, 1, 1), host::date(2002, 1, 1)});
     }},
    {"array of String",
     {},
     {},
     [] {
       return host::stringArray({"one", "two"});
     }},
    {"array of Object",
     {},
     {},
     [] {
       return host::objectArray({"one", host::Value(2)});
     }},
    {"array of Boolean",
     {},
     {},
     [] {
       return host::booleanArray({true, false});
     }},
    {"MemoryBlock", {}, {}, [] { return host::memoryBlock("bytes"); }},
    {"FolderItem of a file", {}, {}, [] { return host::folderItem("/usr"); }},
    {"FolderItem of a missing file", {}, {}, [] { return host::folderItem("/usr/there is none"); }},
    {"FolderItem in a missing folder", {}, {}, [] { return host::folderItem("/there is/none"); }},
    {"Dictionary",
     {},
     {},
     [] {
       return host::dictionary({{"one", 1}, {"two", "text"}});
     }},
    {"Dictionary in a Dictionary",
     {},
     {},
     [] {
       const host::Value inner = host::dictionary({{"key", "value"}});
       return host::dictionary({{"one", inner}, {"two", 2}, {inner, 3}});
     }},
    {"wrapper", {"NSTimeZoneZNK"}, {}, [] { return wrapperOf("NSTimeZoneZNK"); }},
    {"object of an unknown class", {}, {}, [] { return host::newInstance("MDItemZNK"); }},
};
INSTANTIATE_TEST_SUITE_P(Variants, Throwing, testing::ValuesIn(swept(kVariants)));
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Throwing);

}  // namespace
