#include "tests/plugin/sweeps/everything.h"

#include <CoreServices/CoreServices.h>

#include <memory>

#include "standin/carbon/control.h"
#include "standin/coreservices/metadata/planned_answers.h"
#include "tests/plugin/cf_values.h"
#include "tests/support/tier.h"

namespace {

bool hasElements(const host::Value& array) {
  return !array.isNil() && !host::elements(array).empty();
}

int64_t handleOf(const host::Value& object) {
  return host::get(object, "Handle").integer();
}

// Takes back the reference that an item forgets when it is given another file.
class ForgottenReference {
 public:
  explicit ForgottenReference(const host::Value& item) : item_(item), before_(handleOf(item)) {}
  ~ForgottenReference() {
    const standin::Inside service("the test");
    if (before_ != 0 && handleOf(item_) != before_)
      CFRelease(reinterpret_cast<CFTypeRef>(static_cast<intptr_t>(before_)));
  }
  ForgottenReference(const ForgottenReference&) = delete;
  ForgottenReference& operator=(const ForgottenReference&) = delete;

 private:
  const host::Value& item_;
  const int64_t before_;
};

// Answers that are planned are so until its end.
struct PlannedAnswers {
  ~PlannedAnswers() { standin::clearAnswers(); }
};

// An attribute that holds a value of every type.
host::Value valuesOf(const host::Value& item) {
  const PlannedAnswers planned;
  std::vector<CFOwner> values;
  {
    const standin::Inside service("the test");
    values.push_back(cfReal(0.5));
    values.push_back(cfInt64(int64_t{1} << 40));
    values.push_back(own(CFRetain(kCFBooleanTrue)));
    values.push_back(own(CFDateCreate(kCFAllocatorDefault, 0)));
    values.push_back(own(CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>("bytes"), 5)));
    values.push_back(
        own(CFURLCreateWithFileSystemPath(kCFAllocatorDefault, CFSTR("/tmp"), kCFURLPOSIXPathStyle, true)));
    std::vector<CFTypeRef> elements;
    for (const CFOwner& value : values) elements.push_back(value.get());
    standin::planAnswer("MDItemCopyAttribute", cfUnretainedArray(elements).leak());
  }
  return host::call(item, "GetAttribute", "key");
}

// Without an item there is nothing to ask.
template <typename Use>
void addOfItem(const host::Value& item, Answers& answers, const std::string& topic, Use use) {
  answers.add(topic, [&] { return item.isNil() ? host::Value() : host::Value(use()); });
}

typedef void ItemPart(const host::Value& item, const std::string& folder, Answers& answers);

void useProperties(const host::Value& item, const std::string&, Answers& answers) {
  for (const char* name : {"DisplayName", "FSName", "Path", "FSSize"}) {
    addOfItem(item, answers, name, [&] { return host::get(item, name); });
  }
}

void useAttributes(const host::Value& item, const std::string&, Answers& answers) {
  const auto ask = [&](const char* method, const char* name) {
    addOfItem(item, answers, method, [&] { return host::call(item, method, name); });
  };
  ask("GetAttribute", "kMDItemFSSize");
  ask("AttributeString", "kMDItemFSName");
  ask("AttributeBoolean", "kMDItemFSExists");
  ask("AttributeDouble", "kMDItemFSSize");
  ask("AttributeStringArray", "kMDItemContentTypeTree");
  addOfItem(item, answers, "GetAttributes",
            [&] { return host::call(item, "GetAttributes", host::stringArray({"kMDItemFSName"})); });
}

void useAttributeNames(const host::Value& item, const std::string&, Answers& answers) {
  addOfItem(item, answers, "AttributeNames", [&] { return hasElements(host::call(item, "AttributeNames")); });
}

void useValuesOfAllTypes(const host::Value& item, const std::string&, Answers& answers) {
  addOfItem(item, answers, "values of all types", [&] { return valuesOf(item); });
}

void useConstructor(const host::Value& item, const std::string& folder, Answers& answers) {
  addOfItem(item, answers, "Constructor", [&] {
    const ForgottenReference forgotten(item);
    host::call(item, "Constructor", host::folderItem(folder + "/f1"));
    return host::get(item, "FSName");
  });
}

// An item that was made without the plug-in.
host::Value itemOf(const std::string& file) {
  const standin::Inside test("the test");
  const host::Value item = host::newInstance("MDItemZNK");
  host::set(item, "Handle",
            static_cast<int>(
                reinterpret_cast<intptr_t>(MDItemCreateWithURL(kCFAllocatorDefault, makeURL(file).get()))));
  return item;
}

template <ItemPart*... kParts>
void useItem(const std::string& folder, Answers& answers) {
  const host::Value item = itemOf(folder + "/f2");
  (kParts(item, folder, answers), ...);
}

void useSchema(const std::string&, Answers& answers) {
  const auto ask = [&](const char* method, const char* key) {
    answers.add(method, [&] { return host::callShared("MDItemZNK", method, key); });
  };
  for (const char* method : {"DisplayNameForAttribute", "DisplayDescriptionForAttribute", "AttributeType"}) {
    ask(method, "kMDItemFSName");
  }
  ask("AttributeMultiValued", "kMDItemAuthors");
}

void useAllAttributes(const std::string&, Answers& answers) {
  answers.add("AllAttributes",
              [] { return host::Value(hasElements(host::callShared("MDItemZNK", "AllAttributes"))); });
}

// The same as if there were no more than these: they are converted one by one, in the same way.
void useThreeAttributes(const std::string& folder, Answers& answers) {
  const PlannedAnswers planned;
  {
    const standin::Inside service("the test");
    standin::planAnswer("MDSchemaCopyAllAttributes",
                        makeStrings({"kMDItemFSName", "kMDItemFSSize", "kMDItemTitle"}).leak());
  }
  useAllAttributes(folder, answers);
}

void useKeys(const std::string&, Answers& answers) {
  for (const char* key : {"kMDItemFSName", "kMDItemDateAdded"}) {
    answers.add(key, [&] { return host::callShared("MDItemZNK", key); });
  }
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
  const CFOwner added = cfUnretainedArray(items), changed = cfUnretainedArray({items[0]});
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

typedef void QueryPart(const host::Value& query, const std::string& folder, Answers& answers);

template <typename... Arguments>
void ask(const host::Value& query, Answers& answers, const char* topic, const char* method,
         const Arguments&... arguments) {
  answers.add(topic, [&] { return host::call(query, method, arguments...); });
}

void limit(const host::Value& query, const std::string& folder, Answers& answers) {
  answers.addGroundwork("limit", [&] { return host::call(query, "SetMaxCount", 100); });
  answers.addGroundwork("scope", [&] {
    return host::call(query, "SetSearchScope", host::objectArray({host::folderItem(folder)}),
                      host::stringArray({"/none"}));
  });
}

void useBatching(const host::Value& query, const std::string&, Answers& answers) {
  host::Value batching;
  answers.add("batching", [&] { return batching = host::get(query, "BatchingParameters"); });
  answers.add("batching set", [&] {
    host::set(query, "BatchingParameters", batching);
    return host::Value();
  });
}

void useSortingFlags(const host::Value& query, const std::string&, Answers& answers) {
  const Answers::Scope scope(answers);
  answers.addGroundwork(
      "flags set", [&] { return host::call(query, "SetSortOptionFlagsForAttribute", "kMDItemFSName", 2u); });
  answers.add("flags", [&] { return host::call(query, "GetSortOptionFlagsForAttribute", "kMDItemFSName"); });
}

void execute(const host::Value& query, const std::string&, Answers& answers) {
  const auto finished = std::make_shared<int>(0);  // events may come as long as there is the query
  host::setEventHandler(query, "Finish", [finished](const std::vector<host::Value>&) { ++*finished; });
  answers.addGroundwork("executed", [&] { return host::call(query, "Execute", 1); });
  answers.add("finished", [&] { return host::Value(*finished); });
}

void useDescription(const host::Value& query, const std::string&, Answers& answers) {
  ask(query, answers, "complete", "IsGatheringComplete");
  ask(query, answers, "string", "QueryString");
  ask(query, answers, "lists", "ValueListAttributes");
  ask(query, answers, "sorting", "SortingAttributes");
}

void useResults(const host::Value& query, const std::string&, Answers& answers) {
  ask(query, answers, "count", "ResultCount");
  ask(query, answers, "results", "Results");
  ask(query, answers, "value", "AttributeValueOfResultAtIndex", "kMDItemFSName", 0u);
  ask(query, answers, "values", "ValuesOfAttribute", "kMDItemFSSize");
}

void useCounts(const host::Value& query, const std::string&, Answers& answers) {
  const char* const method = "CountOfResultsWithAttributeValue";
  ask(query, answers, "counted", method, "kMDItemFSSize", 3);
  ask(query, answers, "counted as int64", method, "kMDItemFSSize", int64_t{3});
  ask(query, answers, "counted as single", method, "kMDItemFSSize", 3.0f);
  ask(query, answers, "counted as double", method, "kMDItemFSSize", 3.0);
}

void useCountOfOtherTypes(const host::Value& query, const std::string& folder, Answers& answers) {
  ask(query, answers, "counted as others", "CountOfResultsWithAttributeValue", "kMDItemFSSize",
      host::objectArray({true, "text", host::date(2001, 2, 3), host::memoryBlock("bytes"),
                         host::folderItem(folder), host::dictionary({{"key", 1}}),
                         host::stringArray({"text"})}));
}

void useUpdates(const host::Value& query, const std::string&, Answers& answers) {
  answers.add("updated", [&] { return host::Value(updateOf(query)); });
}

void useSortOrder(const host::Value& query, const std::string&, Answers& answers) {
  ask(query, answers, "order set", "SetSortOrder", host::stringArray({"kMDItemFSName"}));
}

template <ItemPart*... kParts>
void useResult(const host::Value& query, const std::string& folder, Answers& answers) {
  const Answers::Scope scope(answers);
  host::Value item;
  answers.addGroundwork("item", [&] { return item = host::call(query, "ResultAtIndex", 1); });
  answers.add("index",
              [&] { return item.isNil() ? host::Value(0) : host::call(query, "IndexOfResult", item); });
  (kParts(item, folder, answers), ...);
}

void useSubset(const host::Value& query, const std::string&, Answers& answers) {
  const Answers::Scope scope(answers);
  host::Value subset;
  answers.addGroundwork("subset", [&] {
    subset = host::construct("MDQueryZNK", query, "kMDItemFSName == \"f1\"");
    return host::Value(handleOf(subset) != 0);
  });
  answers.addGroundwork("subset executed", [&] { return host::call(subset, "Execute", 1); });
  answers.add("subset count", [&] { return host::call(subset, "ResultCount"); });
}

void end(const host::Value& query, const std::string&, Answers& answers) {
  for (const char* name : {"DisableUpdates", "EnableUpdates", "Stop"}) ask(query, answers, name, name);
}

template <QueryPart*... kParts>
void useQuery(const std::string& folder, Answers& answers) {
  const Answers::Scope scope(answers);
  host::Value query;
  answers.addGroundwork("query", [&] {
    query = host::construct("MDQueryZNK", "kMDItemFSName == \"f*\"", host::stringArray({"kMDItemFSSize"}),
                            host::stringArray({"kMDItemFSName"}));
    return host::Value(handleOf(query) != 0);
  });
  (kParts(query, folder, answers), ...);
}

void useNoQuery(const std::string&, Answers& answers) {
  answers.add("without a query", [] { return host::call(host::newInstance("MDQueryZNK"), "Stop"); });
}

void useWindow(const std::string&, Answers& answers) {
  const Answers::Scope scope(answers);
  standin::takeSearchWindow();
  answers.addGroundwork("window status", [] { return host::callGlobal("ShotlightZNK", "text"); });
  answers.add("window", [] { return host::Value(standin::takeSearchWindow().text.value_or("")); });
}

void useAllMethods(const std::string& folder, Answers& answers) {
  useQuery<limit, useBatching, useSortingFlags, execute, useDescription, useResults, useCounts,
           useCountOfOtherTypes, useUpdates, useSortOrder,
           useResult<useProperties, useAttributes, useAttributeNames, useValuesOfAllTypes, useConstructor>,
           useSubset, end>(folder, answers);
  useSchema(folder, answers);
  useAllAttributes(folder, answers);
  useKeys(folder, answers);
  useNoQuery(folder, answers);
  useWindow(folder, answers);
}

void useTag(const std::string&, Answers& answers) {
  answers.add("tag", [] {
    const host::Value tagged = host::newInstance("MDItemZNK");
    host::set(tagged, "Tag", "tag");
    return host::get(tagged, "Tag");
  });
}

void useAllMethodsAndTheTag(const std::string& folder, Answers& answers) {
  useAllMethods(folder, answers);
  useTag(folder, answers);
}

std::vector<Scenario> makeScenarios() {
  std::vector<Scenario> all = {
      {"QueryLife", useQuery<limit, execute, useDescription, end>},
      {"Batching", useQuery<useBatching>},
      {"Sorting", useQuery<limit, useSortingFlags, execute, useSortOrder>},
      {"Results", useQuery<limit, execute, useResults>},
      {"Result", useQuery<limit, execute, useResult<>>},
      {"Counts", useQuery<limit, execute, useCounts>},
      {"CountOfOtherTypes", useQuery<limit, execute, useCountOfOtherTypes>},
      {"Updates", useQuery<limit, execute, useUpdates>},
      {"Subset", useQuery<limit, execute, useSubset>},
      {"NoQuery", useNoQuery},
      {"Item", useItem<useProperties, useAttributes>},
      {"AttributeNames", useItem<useAttributeNames>},
      {"ValuesOfAllTypes", useItem<useValuesOfAllTypes>},
      {"Constructor", useItem<useConstructor>},
      {"Schema", useSchema},
      {"AllAttributes", useThreeAttributes},
      {"Keys", useKeys},
      {"Window", useWindow},
      {"Tag", useTag, true},
  };
  if (isLongTier()) {
    all.push_back({"AllMethods", useAllMethods});
    all.push_back({"Everything", useAllMethodsAndTheTag, true});
  }
  return all;
}

}  // namespace

Answers useEverything(const std::string& folder) {
  Answers answers;
  useAllMethodsAndTheTag(folder, answers);
  answers.finish();
  return answers;
}

const std::vector<Scenario>& scenarios() {
  static const std::vector<Scenario> all = makeScenarios();
  return all;
}

Answers play(const Scenario& scenario, const std::string& folder) {
  Answers answers;
  scenario.use(folder, answers);
  answers.finish();
  return answers;
}
