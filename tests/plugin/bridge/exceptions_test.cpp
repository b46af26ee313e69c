// Host services that throw in the middle of a conversion: the exception comes out as it was thrown, what the
// conversion held is given back, and no dictionary is remembered. Every call that a conversion makes of the
// host throws in its turn.
#include <algorithm>
#include <functional>
#include <map>

#include "tests/plugin/bridge/rows.h"
#include "tests/support/tier.h"

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

class Throwing : public BridgeTest, public testing::WithParamInterface<Subject> {
 protected:
  // The conversion, with a plan to be made just before; the calls of the host that it made.
  Calls convert(const std::function<void()>& plan) {
    for (const std::string& name : GetParam().wrapperClasses) host::addWrapperClass(name, true);
    return GetParam().value ? convertToVariant(plan) : convertToCF(plan);
  }

  // The nth call of that name throws.
  void expectPassesThrough(const host::Settings& settings, const std::string& name, int nth) {
    start(settings);
    EXPECT_THROW(convert([&] { standin::throwFromCall(name.c_str(), nth); }), standin::PlannedException);
    EXPECT_EQ(1, standin::failuresFired());
    EXPECT_EQ(kGivingBack.count(name) ? 1 : 0, heldByPlugin());
    if (kGivingBack.count(name)) host::stop();
    TearDown();
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

TEST_P(Throwing, FromAnyCallPassesThroughAndNothingIsKept) {
  const bool onOneHost = GetParam().onOneHost || sweepsFewerHosts();
  for (const host::Settings& settings : onOneHost ? Hosts{host::Settings()} : hosts()) {
    start(settings);
    const Calls calls = convert([] {});
    TearDown();
    std::map<std::string, int> nth;
    for (const std::string& call : calls) {
      if (!isOfHost(call)) continue;
      SCOPED_TRACE(call + " " + std::to_string(++nth[call]) + " on host " + std::to_string(settings.version));
      expectPassesThrough(settings, call, nth[call]);
    }
    // CFNull is the only value for which the host is not needed.
    EXPECT_EQ(GetParam().name == "row 5, nil", nth.empty());
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
INSTANTIATE_TEST_SUITE_P(Rows, Throwing, testing::ValuesIn(subjectsOfRows()));

CFOwner url(const char* address) {
  return own(CFURLCreateWithString(nullptr, static_cast<CFStringRef>(text(address).get()), nullptr));
}

const Subject kOtherValues[] = {
    {"the URL of a missing file", {}, [] { return url("file:///usr/there%20is%20none"); }, {}},
    {"the URL of a volume", {}, [] { return url("file:///"); }, {}},
    {"the URL of a page", {}, [] { return url("http://example.com/"); }, {}},
    {"a 64-bit number", {}, [] { return number64(7); }, {}},
    {"a real number", {}, [] { return real(0.5); }, {}},
    {"a long text", {}, [] { return text(std::string(200, 'x')); }, {}},
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
INSTANTIATE_TEST_SUITE_P(Values, Throwing, testing::ValuesIn(kOtherValues));

host::Value wrapperOf(const char* className) {
  host::Value wrapper = host::newInstance(className);
  host::setWrapped(wrapper, own(CFUUIDCreate(nullptr)).release());
  return wrapper;
}

const Subject kVariants[] = {
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
INSTANTIATE_TEST_SUITE_P(Variants, Throwing, testing::ValuesIn(kVariants));

}  // namespace
