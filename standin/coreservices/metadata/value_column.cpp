#include "standin/coreservices/metadata/value_column.h"

#include <utility>

namespace standin::metadata {
namespace {

bool isArray(CFTypeRef cf) {
  return CFGetTypeID(cf) == CFArrayGetTypeID();
}

}  // namespace

ValueColumn::ValueColumn(CFStringRef name, bool valueList, Read read)
    : name_(CFStringCreateCopy(kCFAllocatorDefault, name)), valueList_(valueList), read_(std::move(read)) {}

ValueColumn::~ValueColumn() {
  for (const auto& [value, count] : values_) CFRelease(value);
  for (const auto& [value, count] : elements_) CFRelease(value);
  CFRelease(name_);
}

CFTypeRef ValueColumn::increase(Counts& counts, CFTypeRef value) {
  const auto [entry, isNew] = counts.try_emplace(value, 0);
  if (isNew) CFRetain(value);
  ++entry->second;
  return entry->first;
}

void ValueColumn::decrease(Counts& counts, CFTypeRef value) {
  const auto entry = counts.find(value);
  if (--entry->second > 0) return;
  const CFTypeRef key = entry->first;
  counts.erase(entry);
  CFRelease(key);
}

// An element that is there twice counts once.
void ValueColumn::forEachElement(CFTypeRef value, void (*act)(Counts&, CFTypeRef)) {
  const auto array = static_cast<CFArrayRef>(value);
  for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
    const CFTypeRef element = CFArrayGetValueAtIndex(array, i);
    if (!CFArrayContainsValue(array, CFRangeMake(0, i), element)) act(elements_, element);
  }
}

CFTypeRef ValueColumn::valueOf(ResultStore::File file) {
  if (byFile_.size() <= file) byFile_.resize(file + 1, nullptr);
  if (!byFile_[file]) {
    const CFTypeRef value = read_(file, name_);
    ++known_;
    byFile_[file] = value ? increase(values_, value) : kCFNull;
    if (value) {
      if (isArray(value)) forEachElement(value, [](Counts& counts, CFTypeRef v) { increase(counts, v); });
      CFRelease(value);
    }
  }
  return byFile_[file] == kCFNull ? nullptr : byFile_[file];
}

void ValueColumn::forget(ResultStore::File file) {
  if (byFile_.size() <= file) return;
  const CFTypeRef value = std::exchange(byFile_[file], nullptr);
  if (!value) return;
  --known_;
  if (value == kCFNull) return;
  if (isArray(value)) forEachElement(value, decrease);
  decrease(values_, value);
}

CFArrayRef ValueColumn::copyDistinct() const {
  const CFMutableArrayRef distinct = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
  if (!distinct) return nullptr;
  for (const auto& [value, count] : values_) {
    if (!isArray(value)) CFArrayAppendValue(distinct, value);
  }
  for (const auto& [value, count] : elements_) {
    if (!values_.contains(value)) CFArrayAppendValue(distinct, value);
  }
  return distinct;
}

CFIndex ValueColumn::countOf(CFTypeRef value) const {
  const auto in = [&](const Counts& counts) {
    const auto entry = counts.find(value);
    return entry == counts.end() ? 0 : entry->second;
  };
  return in(values_) + in(elements_);
}

CFIndex ValueColumn::countOfNone() const {
  CFIndex count = static_cast<CFIndex>(known_);
  for (const auto& [value, ofValue] : values_) count -= ofValue;
  return count;
}

}  // namespace standin::metadata
