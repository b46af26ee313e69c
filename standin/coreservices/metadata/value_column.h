// The values that results have for one attribute, and how many have each.
//
// A value is read when it is first asked for, and belongs to the column until its file is forgotten. Equal
// values are one object.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <functional>
#include <unordered_map>
#include <vector>

#include "standin/coreservices/search/result_store.h"

namespace standin::metadata {

class ValueColumn {
 public:
  // Answers a file's value for the attribute, the caller's; null where it has none.
  using Read = std::function<CFTypeRef(ResultStore::File, CFStringRef name)>;

  ValueColumn(CFStringRef name, bool valueList, Read read);  // keeps a copy of the name
  ~ValueColumn();
  ValueColumn(const ValueColumn&) = delete;
  ValueColumn& operator=(const ValueColumn&) = delete;

  CFStringRef name() const { return name_; }
  bool isValueList() const { return valueList_; }

  // Get rule; null where there is none.
  CFTypeRef valueOf(ResultStore::File file);
  // The file changed, or is no result any more.
  void forget(ResultStore::File file);
  size_t known() const { return known_; }  // how many files' values were asked for and not forgotten

  // Of the files whose values were asked for: each value once, each element of a value that is an array for
  // itself.
  CFArrayRef copyDistinct() const;
  // The number of those files that have this value, or have it among others.
  CFIndex countOf(CFTypeRef value) const;
  CFIndex countOfNone() const;

 private:
  struct Hash {
    size_t operator()(CFTypeRef cf) const { return CFHash(cf); }
  };
  struct Equal {
    bool operator()(CFTypeRef left, CFTypeRef right) const { return CFEqual(left, right); }
  };
  using Counts = std::unordered_map<CFTypeRef, CFIndex, Hash, Equal>;  // keys are retained

  static CFTypeRef increase(Counts& counts, CFTypeRef value);
  static void decrease(Counts& counts, CFTypeRef value);
  void forEachElement(CFTypeRef array, void (*act)(Counts&, CFTypeRef));

  const CFStringRef name_;
  const bool valueList_;
  const Read read_;
  size_t known_ = 0;
  std::vector<CFTypeRef> byFile_;  // null: not read yet; kCFNull: has none
  Counts values_;
  Counts elements_;  // of values that are arrays
};

}  // namespace standin::metadata
