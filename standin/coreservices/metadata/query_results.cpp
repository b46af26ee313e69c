#include "standin/coreservices/metadata/query_results.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "standin/coreservices/metadata/cf_values.h"
#include "standin/coreservices/metadata/item.h"

namespace standin::metadata {
namespace {

constexpr uint32_t kReverseSortOrder = 1;

CFIndex countOf(CFArrayRef array) {
  return array ? CFArrayGetCount(array) : 0;
}

CFStringRef stringAt(CFArrayRef array, CFIndex index) {
  return static_cast<CFStringRef>(CFArrayGetValueAtIndex(array, index));
}

// Results aren't ranked: each is as relevant as another.
CFTypeRef copyRelevance(ResultStore::File, CFStringRef) {
  return createObject(Value{1.0});
}

void setArray(CFMutableDictionaryRef dictionary, CFStringRef key, CFArrayRef array) {
  if (array && CFArrayGetCount(array) > 0) CFDictionarySetValue(dictionary, key, array);
  if (array) CFRelease(array);
}

}  // namespace

QueryResults::QueryResults(CFArrayRef valueListAttributes, CFArrayRef sortingAttributes)
    : ranks_(static_cast<size_t>(countOf(sortingAttributes))) {
  addColumns(valueListAttributes, true);
  addColumns(sortingAttributes, false);
  for (CFIndex i = 0; i < countOf(sortingAttributes); ++i) {
    const CFStringRef name = columnOf(stringAt(sortingAttributes, i))->name();
    sortable_.push_back({name, attributeNamed(name)});
  }
  sortOrder_.resize(sortable_.size());
  std::iota(sortOrder_.begin(), sortOrder_.end(), size_t{0});
  if (!sortable_.empty()) ranker_ = std::make_unique<Ranker>();
}

QueryResults::~QueryResults() {
  for (const MDItemRef item : items_) {
    if (item) CFRelease(item);
  }
}

void QueryResults::addColumns(CFArrayRef attributes, bool valueLists) {
  for (CFIndex i = 0; i < countOf(attributes); ++i) {
    const CFStringRef name = stringAt(attributes, i);
    if (columnOf(name)) continue;
    const auto ofFile = [this](ResultStore::File file, CFStringRef key) { return copyValue(file, key); };
    const bool isOfResult = CFEqual(name, kMDQueryResultContentRelevance);
    const auto read = isOfResult ? ValueColumn::Read(copyRelevance) : ValueColumn::Read(ofFile);
    columns_.push_back(std::make_unique<ValueColumn>(name, valueLists, read));
  }
}

// Items

MDItemRef QueryResults::itemOf(ResultStore::File file) {
  if (items_.size() <= file) items_.resize(store_.fileLimit(), nullptr);
  if (!items_[file]) items_[file] = createItem(kCFAllocatorDefault, store_.path(file));
  return items_[file];
}

MDItemRef QueryResults::itemAt(size_t index) {
  return itemOf(order_.at(index));
}

size_t QueryResults::indexOf(const std::string& path) const {
  const ResultStore::File file = store_.find(path);
  if (file == ResultStore::kNoFile || std::ranges::find(unsettled_, file) != unsettled_.end()) return size();
  return order_.indexOf(file);
}

CFArrayRef QueryResults::itemsLookedAt(const std::vector<ResultStore::File>& files) const {
  const CFMutableArrayRef items = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
  for (const ResultStore::File file : files) {
    if (items && file < items_.size() && items_[file]) CFArrayAppendValue(items, items_[file]);
  }
  return items;
}

// Values

std::vector<FileAttribute> QueryResults::attributes() const {
  std::vector<FileAttribute> attributes;
  for (const auto& column : columns_) attributes.push_back(attributeNamed(column->name()));
  return attributes;
}

ValueColumn* QueryResults::columnOf(CFStringRef attribute) const {
  for (const auto& column : columns_) {
    if (CFEqual(column->name(), attribute)) return column.get();
  }
  return nullptr;
}

bool QueryResults::listsValuesOf(CFStringRef attribute) const {
  const ValueColumn* const column = columnOf(attribute);
  return column && column->isValueList();
}

// With the values of all results.
const ValueColumn& QueryResults::valueListOf(CFStringRef attribute) const {
  ValueColumn& column = *columnOf(attribute);
  if (column.known() < size()) {
    for (const ResultStore::File file : order_.files()) column.valueOf(file);
  }
  return column;
}

CFTypeRef QueryResults::copyValue(ResultStore::File file, CFStringRef attribute) const {
  if (file < items_.size() && items_[file]) return MDItemCopyAttribute(items_[file], attribute);
  const MDItemRef item = createItem(kCFAllocatorDefault, store_.path(file));
  if (!item) return nullptr;
  const CFTypeRef value = MDItemCopyAttribute(item, attribute);
  CFRelease(item);
  return value;
}

CFTypeRef QueryResults::valueAt(size_t index, CFStringRef attribute) {
  return columnOf(attribute)->valueOf(order_.at(index));
}

CFArrayRef QueryResults::copyValuesOf(CFStringRef attribute) {
  return valueListOf(attribute).copyDistinct();
}

CFIndex QueryResults::countWithValue(CFStringRef attribute, CFTypeRef value) {
  const ValueColumn& column = valueListOf(attribute);
  return value ? column.countOf(value) : column.countOfNone();
}

// Order

size_t QueryResults::sortAttribute(CFStringRef name) const {
  const auto found = std::find_if(sortable_.begin(), sortable_.end(),
                                  [&](const SortAttribute& a) { return CFEqual(a.name, name); });
  return static_cast<size_t>(found - sortable_.begin());
}

bool QueryResults::setSortOrder(CFArrayRef attributes) {
  std::vector<size_t> order;
  for (CFIndex i = 0; i < CFArrayGetCount(attributes); ++i) {
    order.push_back(sortAttribute(stringAt(attributes, i)));
    if (order.back() == sortable_.size()) return false;
  }
  sortOrder_ = std::move(order);
  sortAgain();
  return true;
}

bool QueryResults::setSortFlags(CFStringRef attribute, uint32_t flags) {
  const size_t index = sortAttribute(attribute);
  if (index == sortable_.size()) return false;
  sortable_[index].flags = flags;
  sortAgain();
  return true;
}

uint32_t QueryResults::sortFlags(CFStringRef attribute) const {
  const size_t index = sortAttribute(attribute);
  return index == sortable_.size() ? 0 : sortable_[index].flags;
}

std::vector<SortKey> QueryResults::sortKeys() const {
  std::vector<SortKey> keys;
  for (const size_t index : sortOrder_) {
    keys.push_back({index, (sortable_[index].flags & kReverseSortOrder) != 0});
  }
  return keys;
}

// Of several values, the first counts. An attribute that the schema doesn't know is missing from every file.
void QueryResults::rank(ResultStore::File file, FileRecord& record) {
  for (size_t i = 0; i < sortable_.size(); ++i) {
    const std::optional<Value> value = record.value(sortable_[i].file);
    ranks_.set(file, i, value ? ranker_->rankOf(*value) : Rank());
  }
}

void QueryResults::rankAgain(ResultStore::File file) {
  if (sortable_.empty()) return;
  const std::string path = store_.path(file);
  FileByPath record(path);
  rank(file, record.record());
}

void QueryResults::gathered(ResultStore::File file, FileRecord& record) {
  rank(file, record);
  if (isSorted() || heldBack_) {
    unsettled_.push_back(file);
  } else {
    order_.append(file);
  }
}

// Sorts those that are no results yet, and merges them with the others.
void QueryResults::settle() {
  if (unsettled_.empty()) return;
  if (!isSorted()) {
    for (const ResultStore::File file : std::exchange(unsettled_, {})) order_.append(file);
    return;
  }
  std::vector<ResultStore::File> all = order_.files();
  const auto middle = static_cast<ptrdiff_t>(all.size());
  all.insert(all.end(), unsettled_.begin(), unsettled_.end());
  unsettled_.clear();
  const auto before = [this, keys = sortKeys()](ResultStore::File left, ResultStore::File right) {
    return ranks_.before(left, right, keys);
  };
  std::stable_sort(all.begin() + middle, all.end(), before);
  std::inplace_merge(all.begin(), all.begin() + middle, all.end(), before);
  order_.assign(all);
}

void QueryResults::sortAgain() {
  std::vector<ResultStore::File> noResults = std::exchange(unsettled_, order_.files());
  order_.assign({});
  settle();
  unsettled_ = std::move(noResults);
}

void QueryResults::insert(ResultStore::File file) {
  if (!isSorted()) return order_.append(file);
  order_.insert(file, [this, keys = sortKeys()](ResultStore::File left, ResultStore::File right) {
    return ranks_.before(left, right, keys);
  });
}

// Changes

void QueryResults::forget(ResultStore::File file) {
  for (const auto& column : columns_) column->forget(file);
}

CFDictionaryRef QueryResults::update(const ResultChanges& changes) {
  const CFMutableDictionaryRef told = CFDictionaryCreateMutable(
      kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
  setArray(told, kMDQueryUpdateChangedItems, itemsLookedAt(changes.changed));
  setArray(told, kMDQueryUpdateRemovedItems, itemsLookedAt(changes.removed));
  for (const ResultStore::File file : changes.removed) {
    order_.remove(file);
    forget(file);
    if (file < items_.size() && items_[file]) CFRelease(std::exchange(items_[file], nullptr));
  }
  // All of them leave before the first gets its new rank: those that stay are in their order.
  for (const ResultStore::File file : changes.changed) {
    if (isSorted()) order_.remove(file);
    forget(file);
  }
  for (const ResultStore::File file : changes.changed) {
    rankAgain(file);
    if (isSorted()) insert(file);
  }
  for (const ResultStore::File file : changes.removed) store_.remove(file);
  std::vector<ResultStore::File> added;
  for (const std::string& path : changes.added) {
    added.push_back(store_.add(path));
    rankAgain(added.back());
    insert(added.back());
    itemOf(added.back());
  }
  setArray(told, kMDQueryUpdateAddedItems, itemsLookedAt(added));
  return told;
}

}  // namespace standin::metadata
