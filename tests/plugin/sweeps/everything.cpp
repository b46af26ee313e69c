#include "tests/plugin/sweeps/everything.h"

#include <CoreServices/CoreServices.h>

#include <algorithm>

#include "standin/carbon/control.h"
#include "standin/coreservices/metadata/planned_answers.h"
#include "tests/plugin/cf_values.h"

namespace {

const std::string kNeutral = "neutral";

std::string describe(const host::Value& value);

std::string describeEntries(const host::Value& dictionary) {
  std::string all;
  for (const auto& [key, value] : host::entries(dictionary)) {
    all += "[" + describe(key) + " = " + describe(value) + "]";
  }
  return all.empty() ? kNeutral : all;
}

std::string describe(const host::Value& value) {
  switch (value.kind()) {
    case host::Kind::boolean:
      return value.boolean() ? "true" : kNeutral;
    case host::Kind::int32:
    case host::Kind::int64:
    case host::Kind::uint32:
      return value.integer() != 0 ? std::to_string(value.integer()) : kNeutral;
    case host::Kind::array: {
      std::string all;
      for (const host::Value& element : host::elements(value)) all += "[" + describe(element) + "]";
      return all.empty() ? kNeutral : all;
    }
    case host::Kind::number:
      return value.number() != 0 ? std::to_string(value.number()) : kNeutral;
    case host::Kind::object:
      if (value.isNil()) return kNeutral;
      return host::isA(value, "Dictionary") ? describeEntries(value) : "an object";
    default:
      return value.isNil() || value.text().empty() ? kNeutral : value.text();
  }
}

bool hasElements(const host::Value& array) {
  return !array.isNil() && !host::elements(array).empty();
}

// Collects answers. A use may be groundwork for those that follow until the end of the innermost scope.
class Answers {
 public:
  class Scope {
   public:
    explicit Scope(Answers& answers) : answers_(answers), outer_(answers.base_) {}
    ~Scope() { answers_.base_ = outer_; }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    Answers& answers_;
    const Answer outer_;
  };

  template <typename Use>
  void add(const std::string& topic, Use use) {
    Answer answer = base_;
    answer.topic = topic;
    const int failures = standin::failuresFired();
    standin::startLog();
    answer.value = describe(use());
    answer.calls.merge(setOf(standin::stopLog()));
    answer.failed |= standin::failuresFired() > failures;
    answer.raised = host::takeExceptions();
    all_.push_back(std::move(answer));
  }

  template <typename Use>
  void addGroundwork(const std::string& topic, Use use) {
    add(topic, use);
    base_.calls = all_.back().calls;
    base_.failed = all_.back().failed;
  }

  std::vector<Answer> take() { return std::move(all_); }

 private:
  static std::set<std::string> setOf(const Calls& calls) { return {calls.begin(), calls.end()}; }

  Answer base_;
  std::vector<Answer> all_;
};

int64_t handleOf(const host::Value& object) {
  return host::get(object, "Handle").integer();
}

// Takes back the reference that an item forgets when it is given another file.
class ForgottenReference {
 public:
  explicit ForgottenReference(const host::Value& item) : item_(item), before_(handleOf(item)) {}
  ~ForgottenReference() {
    const standin::Inside service("the test");
    if (handleOf(item_) != before_) CFRelease(reinterpret_cast<CFTypeRef>(static_cast<intptr_t>(before_)));
  }
  ForgottenReference(const ForgottenReference&) = delete;
  ForgottenReference& operator=(const ForgottenReference&) = delete;

 private:
  const host::Value& item_;
  const int64_t before_;
};

// An attribute that holds a value of every type.
host::Value valuesOf(const host::Value& item) {
  struct Planned {
    ~Planned() { standin::clearAnswers(); }
  } const planned;
  std::vector<CFOwner> values;
  {
    const standin::Inside service("the test");
    values.push_back(cfReal(0.5));
    values.push_back(cfInteger(int64_t{1} << 40));
    values.push_back(own(CFRetain(kCFBooleanTrue)));
    values.push_back(own(CFDateCreate(kCFAllocatorDefault, 0)));
    values.push_back(own(CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>("bytes"), 5)));
    values.push_back(
        own(CFURLCreateWithFileSystemPath(kCFAllocatorDefault, CFSTR("/tmp"), kCFURLPOSIXPathStyle, true)));
    std::vector<CFTypeRef> elements;
    for (const CFOwner& value : values) elements.push_back(value.get());
    standin::planAnswer("MDItemCopyAttribute", cfArray(elements).release());
  }
  return host::call(item, "GetAttribute", "key");
}

// Where no item could be had there is nothing to ask.
void useItem(const host::Value& item, const std::string& folder, Answers& answers) {
  const auto add = [&](const std::string& topic, auto use) {
    answers.add(topic, [&] { return item.isNil() ? host::Value() : host::Value(use()); });
  };
  const auto ask = [&](const char* method, const char* name) {
    add(method, [&] { return host::call(item, method, name); });
  };
  for (const char* name : {"DisplayName", "FSName", "Path", "FSSize"}) {
    add(name, [&] { return host::get(item, name); });
  }
  ask("GetAttribute", "kMDItemFSSize");
  ask("AttributeString", "kMDItemFSName");
  ask("AttributeBoolean", "kMDItemFSExists");
  ask("AttributeDouble", "kMDItemFSSize");
  ask("AttributeStringArray", "kMDItemContentTypeTree");
  add("GetAttributes",
      [&] { return host::call(item, "GetAttributes", host::stringArray({"kMDItemFSName"})); });
  add("AttributeNames", [&] { return hasElements(host::call(item, "AttributeNames")); });
  add("values of all types", [&] { return valuesOf(item); });
  add("Constructor", [&] {
    const ForgottenReference forgotten(item);
    host::call(item, "Constructor", host::folderItem(folder + "/f1"));
    return host::get(item, "FSName");
  });
}

void useSchema(Answers& answers) {
  const auto ask = [&](const char* method, const char* key) {
    answers.add(method, [&] { return host::callShared("MDItemZNK", method, key); });
  };
  for (const char* method : {"DisplayNameForAttribute", "DisplayDescriptionForAttribute", "AttributeType"}) {
    ask(method, "kMDItemFSName");
  }
  ask("AttributeMultiValued", "kMDItemAuthors");
  answers.add("AllAttributes",
              [] { return host::Value(hasElements(host::callShared("MDItemZNK", "AllAttributes"))); });
  for (const char* key : {"kMDItemFSName", "kMDItemDateAdded"}) {
    answers.add(key, [&] { return host::callShared("MDItemZNK", key); });
  }
}

// Before it is executed.
void prepare(const host::Value& query, const std::string& folder, Answers& answers) {
  answers.addGroundwork("limit", [&] { return host::call(query, "SetMaxCount", 100); });
  answers.addGroundwork("scope", [&] {
    return host::call(query, "SetSearchScope", host::objectArray({host::folderItem(folder)}),
                      host::stringArray({"/none"}));
  });
  host::Value batching;
  answers.add("batching", [&] { return batching = host::get(query, "BatchingParameters"); });
  answers.add("batching set", [&] {
    host::set(query, "BatchingParameters", batching);
    return host::Value();
  });
  const Answers::Scope scope(answers);
  answers.addGroundwork(
      "flags set", [&] { return host::call(query, "SetSortOptionFlagsForAttribute", "kMDItemFSName", 2u); });
  answers.add("flags", [&] { return host::call(query, "GetSortOptionFlagsForAttribute", "kMDItemFSName"); });
}

// Posts what the metadata service does, whose own calls don't count: all results as added, the first one as
// changed.
void postUpdate(const host::Value& query) {
  const standin::Inside service("the metadata service");
  const auto reference = reinterpret_cast<MDQueryRef>(static_cast<intptr_t>(handleOf(query)));
  std::vector<CFTypeRef> items;
  for (CFIndex i = 0; reference && i < MDQueryGetResultCount(reference); ++i) {
    items.push_back(MDQueryGetResultAtIndex(reference, i));
  }
  if (items.empty()) return;
  const CFOwner added = cfArray(items), changed = cfArray({items[0]});
  const CFOwner lists =
      cfDictionary({{kMDQueryUpdateAddedItems, added.get()}, {kMDQueryUpdateChangedItems, changed.get()}});
  CFNotificationCenterPostNotification(CFNotificationCenterGetLocalCenter(), kMDQueryDidUpdateNotification,
                                       reference, static_cast<CFDictionaryRef>(lists.get()), true);
}

// What an Update handler hears of it.
std::string updateOf(const host::Value& query) {
  std::string heard;
  host::setEventHandler(query, "Update", [&](const std::vector<host::Value>& arguments) {
    const char* const lists[] = {"added ", "changed ", "removed "};
    heard = "[heard]";
    for (size_t i = 0; i < arguments.size(); ++i) {
      if (arguments[i].isNil()) continue;
      for (const host::Value& item : host::elements(arguments[i]))
        heard += "[" + (lists[i] + describe(item)) + "]";
    }
  });
  postUpdate(query);
  host::setEventHandler(query, "Update", nullptr);
  return heard;
}

void useResults(const host::Value& query, const std::string& folder, Answers& answers) {
  const auto ask = [&](const char* topic, const char* method, const auto&... arguments) {
    answers.add(topic, [&] { return host::call(query, method, arguments...); });
  };
  ask("complete", "IsGatheringComplete");
  ask("string", "QueryString");
  ask("lists", "ValueListAttributes");
  ask("sorting", "SortingAttributes");
  ask("count", "ResultCount");
  ask("results", "Results");
  ask("value", "AttributeValueOfResultAtIndex", "kMDItemFSName", 0u);
  ask("values", "ValuesOfAttribute", "kMDItemFSSize");
  ask("counted", "CountOfResultsWithAttributeValue", "kMDItemFSSize", 3);
  ask("counted as int64", "CountOfResultsWithAttributeValue", "kMDItemFSSize", int64_t{3});
  ask("counted as single", "CountOfResultsWithAttributeValue", "kMDItemFSSize", 3.0f);
  ask("counted as double", "CountOfResultsWithAttributeValue", "kMDItemFSSize", 3.0);
  ask("counted as others", "CountOfResultsWithAttributeValue", "kMDItemFSSize",
      host::objectArray({true, "text", host::date(2001, 2, 3), host::memoryBlock("bytes"),
                         host::folderItem(folder), host::dictionary({{"key", 1}}),
                         host::stringArray({"text"})}));
  answers.add("updated", [&] { return host::Value(updateOf(query)); });
  ask("order set", "SetSortOrder", host::stringArray({"kMDItemFSName"}));
  const Answers::Scope scope(answers);
  host::Value item;
  answers.addGroundwork("item", [&] { return item = host::call(query, "ResultAtIndex", 1); });
  answers.add("index",
              [&] { return item.isNil() ? host::Value(0) : host::call(query, "IndexOfResult", item); });
  useItem(item, folder, answers);
}

void useSubset(const host::Value& query, Answers& answers) {
  const Answers::Scope scope(answers);
  host::Value subset;
  answers.addGroundwork("subset", [&] {
    subset = host::construct("MDQueryZNK", query, "kMDItemFSName == \"f1\"");
    return host::Value(handleOf(subset) != 0);
  });
  answers.addGroundwork("subset executed", [&] { return host::call(subset, "Execute", 1); });
  answers.add("subset count", [&] { return host::call(subset, "ResultCount"); });
}

void useQuery(const std::string& folder, Answers& answers) {
  const Answers::Scope scope(answers);
  host::Value query;
  answers.addGroundwork("query", [&] {
    query = host::construct("MDQueryZNK", "kMDItemFSName == \"f*\"", host::stringArray({"kMDItemFSSize"}),
                            host::stringArray({"kMDItemFSName"}));
    return host::Value(handleOf(query) != 0);
  });
  int finished = 0;
  host::setEventHandler(query, "Finish", [&](const std::vector<host::Value>&) { ++finished; });
  prepare(query, folder, answers);
  answers.addGroundwork("executed", [&] { return host::call(query, "Execute", 1); });
  answers.add("finished", [&] { return host::Value(finished); });
  useResults(query, folder, answers);
  useSubset(query, answers);
  for (const char* name : {"DisableUpdates", "EnableUpdates", "Stop"}) {
    answers.add(name, [&] { return host::call(query, name); });
  }
}

void useWindow(Answers& answers) {
  const Answers::Scope scope(answers);
  standin::takeSearchWindow();
  answers.addGroundwork("window status", [] { return host::callGlobal("ShotlightZNK", "text"); });
  answers.add("window", [] { return host::Value(standin::takeSearchWindow().text.value_or("")); });
}

void useAllMethods(const std::string& folder, Answers& answers) {
  useQuery(folder, answers);
  useSchema(answers);
  answers.add("without a query", [] { return host::call(host::newInstance("MDQueryZNK"), "Stop"); });
  useWindow(answers);
}

}  // namespace

std::string Answer::text() const {
  std::string all = topic + ": " + value;
  for (const auto& exception : raised) {
    all += ", raised " + exception.className + " \"" + exception.message + "\" " +
           std::to_string(exception.errorNumber);
  }
  return all;
}

std::vector<std::string> textsOf(const std::vector<Answer>& answers) {
  std::vector<std::string> texts;
  for (const Answer& answer : answers) texts.push_back(answer.text());
  return texts;
}

std::vector<Answer> useMethods(const std::string& folder) {
  Answers answers;
  useAllMethods(folder, answers);
  return answers.take();
}

std::vector<Answer> useEverything(const std::string& folder) {
  Answers answers;
  useAllMethods(folder, answers);
  answers.add("tag", [] {
    const host::Value tagged = host::newInstance("MDItemZNK");
    host::set(tagged, "Tag", "tag");
    return host::get(tagged, "Tag");
  });
  return answers.take();
}

namespace {

// What the platform answers where it fails, and what an item has that could not be given another file.
const std::set<std::string> kFailures = {"index: -1", "window status: -50", "Constructor: f2"};

// What stands in brackets.
std::vector<std::string> elementsOf(const std::string& value) {
  std::vector<std::string> elements;
  for (size_t start = value.find('['); start != std::string::npos; start = value.find('[', start + 1)) {
    elements.push_back(value.substr(start + 1, value.find(']', start) - start - 1));
  }
  return elements;
}

bool isDegradedElement(const std::string& element) {
  if (element == "file:///tmp/") return true;  // a URL of which no folder item could be had
  return element == kNeutral || element.ends_with(" = " + kNeutral) || element.starts_with(kNeutral + " = ");
}

bool isDegradedList(const std::string& value, const std::string& complete) {
  const auto whole = elementsOf(complete), left = elementsOf(value);
  return !left.empty() && left.size() <= whole.size() &&
         std::all_of(left.begin(), left.end(), [&](const std::string& element) {
           return isDegradedElement(element) || std::find(whole.begin(), whole.end(), element) != whole.end();
         });
}

// The class, the message and the number may each be missing.
bool isKnown(const host::Exception& raised) {
  // The host's own, where an element that could not be inserted leaves its place free, and where a key could
  // not be had.
  if (raised == host::Exception{"OutOfBoundsException", "", 0}) return true;
  if (raised == host::Exception{"KeyNotFoundException", "", 0}) return true;
  const std::set<std::string> classes = {"NilObjectException", "RuntimeException"};
  const std::set<std::string> messages = {"MDQuery Reference is nil", "MDItem Reference is nil",
                                          "Wrong type used for getting attribute value.", ""};
  return classes.count(raised.className) && messages.count(raised.message) &&
         (raised.errorNumber == 0 || raised.errorNumber == -1);
}

}  // namespace

bool isDegraded(const Answer& answer, const Answer& complete) {
  if (answer.topic != complete.topic) return false;
  if (!std::all_of(answer.raised.begin(), answer.raised.end(), isKnown)) return false;
  return answer.value == complete.value || answer.value == kNeutral ||
         kFailures.count(answer.topic + ": " + answer.value) || isDegradedList(answer.value, complete.value);
}
