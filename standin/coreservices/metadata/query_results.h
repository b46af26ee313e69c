// The results of a query: their order, the items that were made of them, and the values that can be asked of
// them all.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "standin/coreservices/attributes/attributes.h"
#include "standin/coreservices/files/file_attributes.h"
#include "standin/coreservices/metadata/result_order.h"
#include "standin/coreservices/metadata/value_column.h"
#include "standin/coreservices/search/result_store.h"
#include "standin/coreservices/search/sorting.h"
#include "standin/coreservices/services.h"

namespace standin::metadata {

struct ResultChanges {
  std::vector<std::string> added;  // paths
  std::vector<ResultStore::File> changed;
  std::vector<ResultStore::File> removed;

  size_t size() const { return added.size() + changed.size() + removed.size(); }
};

class QueryResults {
 public:
  // Arrays of strings, or null.
  QueryResults(CFArrayRef valueListAttributes, CFArrayRef sortingAttributes);
  ~QueryResults();
  QueryResults(const QueryResults&) = delete;
  QueryResults& operator=(const QueryResults&) = delete;

  size_t size() const { return order_.size(); }
  // `index` is below size(). An item is made when it is first asked for. Get rule.
  MDItemRef itemAt(size_t index);
  // size() when the file at that path isn't a result.
  size_t indexOf(const std::string& path) const;

  // Whether values can be asked for at an index: of a value-list or a sorting attribute.
  bool hasValuesOf(CFStringRef attribute) const { return columnOf(attribute) != nullptr; }
  bool listsValuesOf(CFStringRef attribute) const;
  // Get rule; null for a missing value.
  CFTypeRef valueAt(size_t index, CFStringRef attribute);
  // Of a value-list attribute. The caller's.
  CFArrayRef copyValuesOf(CFStringRef attribute);
  // The same. A null value: those that have none.
  CFIndex countWithValue(CFStringRef attribute, CFTypeRef value);

  // Answer false, and change nothing, where an attribute isn't among the sorting attributes named at
  // creation.
  bool setSortOrder(CFArrayRef attributes);
  bool setSortFlags(CFStringRef attribute, uint32_t flags);
  uint32_t sortFlags(CFStringRef attribute) const;  // 0 also for others

  // Those that results are sorted by or that values are listed of.
  std::vector<FileAttribute> attributes() const;

  // Gathering: the file was put in the store. Where the query is sorted, or results are held back, it is a
  // result once they are settled.
  ResultStore& store() { return store_; }
  void gathered(ResultStore::File file, FileRecord& record);
  void holdBack(bool held) { heldBack_ = held; }
  bool holdsBack() const { return !unsettled_.empty(); }
  void settle();

  // Answers what a notification says of the changes, the caller's: those changed and removed that were looked
  // at, and all that were added.
  CFDictionaryRef update(const ResultChanges& changes);

 private:
  struct SortAttribute {
    CFStringRef name;
    FileAttribute file;
    uint32_t flags = 0;
  };

  MDItemRef itemOf(ResultStore::File file);
  CFArrayRef itemsLookedAt(const std::vector<ResultStore::File>& files) const;
  CFTypeRef copyValue(ResultStore::File file, CFStringRef attribute) const;
  void rank(ResultStore::File file, FileRecord& record);
  void rankAgain(ResultStore::File file);
  void forget(ResultStore::File file);
  void insert(ResultStore::File file);
  bool isSorted() const { return !sortOrder_.empty(); }
  void sortAgain();
  size_t sortAttribute(CFStringRef name) const;
  ValueColumn* columnOf(CFStringRef attribute) const;
  const ValueColumn& valueListOf(CFStringRef attribute) const;
  void addColumns(CFArrayRef attributes, bool valueLists);
  std::vector<SortKey> sortKeys() const;

  ResultStore store_;
  ResultOrder order_;
  std::vector<ResultStore::File> unsettled_;  // gathered, and no results yet
  bool heldBack_ = false;
  std::vector<MDItemRef> items_;         // by file; null for those that weren't looked at
  std::vector<SortAttribute> sortable_;  // named at creation
  std::vector<size_t> sortOrder_;        // which of them, the primary key first
  std::unique_ptr<Ranker> ranker_;       // where there are sortable attributes
  Ranks ranks_;
  std::vector<std::unique_ptr<ValueColumn>> columns_;
};

}  // namespace standin::metadata
