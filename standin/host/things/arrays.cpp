#include "standin/host/things/arrays.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "standin/host/machine/machine_call.h"
#include "standin/host/machine/memory.h"
#include "standin/host/state/runtime.h"

namespace standin::host {
namespace {

constexpr uint32_t kArrayMark = 0x48415252;  // 'HARR'
constexpr size_t kBlockBytes = 8 * sizeof(uint32_t);
constexpr BlockName kStorageName = {"array's element storage"};

}  // namespace

HostArray::HostArray(ElementKind elementKind, int32_t elementCount, Side owner)
    : Counted(kThing, kBlockBytes, owner),
      kind_(elementKind),
      count_(elementCount),
      capacity_(std::max(elementCount, 4)) {
  words()[0] = kArrayMark;
  storage_ = static_cast<unsigned char*>(newBlock(storageSize(), reusesAddresses()));
  owned_.resize(static_cast<size_t>(count_));
  publish();
}

std::string HostArray::describe() const {
  return "array of " + std::to_string(count_);
}

size_t HostArray::elementSize() const {
  switch (kind_) {
    case ElementKind::boolean:
      return 1;
    case ElementKind::int64:
    case ElementKind::number:
      return 8;
    default:
      return 4;
  }
}

void HostArray::publish() {
  const void* shown = storage_;
  if (hidesArrayStorage()) {
    shown = unreadableAddress();
  } else if (!settings().directArrayStorage) {
    shown = nullptr;
  }
  words()[2] = wordOf(shown);
}

void HostArray::grow() {
  const size_t oldBytes = storageSize();
  capacity_ *= 2;
  auto* const larger = static_cast<unsigned char*>(newBlock(storageSize(), reusesAddresses()));
  std::memcpy(larger, storage_, oldBytes);
  retireBlock(storage_, oldBytes, kStorageName);
  storage_ = larger;
  publish();
}

bool HostArray::isOpen() const {
  return words()[2] == wordOf(storage_);
}

void HostArray::noticeDirectWrite(int32_t index) {
  void* now = nullptr;
  std::memcpy(&now, slot(index), sizeof now);
  void*& before = owned_[static_cast<size_t>(index)];
  if (now == before) return;
  takeFromPlugin(now, "(element storage of an array)");
  giveToPlugin(before);
  before = now;
}

void HostArray::empty() {
  for (int32_t i = 0; holdsHandles() && i < count_; ++i) setHandle(i, nullptr);
}

void HostArray::end() {
  for (int32_t i = 0; holdsHandles() && i < count_; ++i) release(handleAt(i), Side::host);
  retireBlock(storage_, storageSize(), kStorageName);
}

bool HostArray::giveUp(const void* handle) {
  if (!holdsHandles() || !isOpen()) return false;
  const auto found = std::find(owned_.begin(), owned_.end(), handle);
  if (found == owned_.end()) return false;
  *found = nullptr;
  return true;
}

void* HostArray::handleAt(int32_t index) {
  noticeDirectWrite(index);
  return owned_[static_cast<size_t>(index)];
}

void HostArray::setHandle(int32_t index, void* handle) {
  noticeDirectWrite(index);
  retain(handle, Side::host);
  void* const before = std::exchange(owned_[static_cast<size_t>(index)], handle);
  std::memcpy(slot(index), &handle, sizeof handle);
  release(before, Side::host);
}

void HostArray::read(int32_t index, void* out) const {
  std::memcpy(out, slot(index), elementSize());
}

void HostArray::write(int32_t index, const void* value) {
  std::memcpy(slot(index), value, elementSize());
}

void HostArray::insertEmpty(int32_t index) {
  if (count_ == capacity_) grow();
  const size_t size = elementSize();
  std::memmove(slot(index) + size, slot(index), static_cast<size_t>(count_ - index) * size);
  std::memset(slot(index), 0, size);
  owned_.insert(owned_.begin() + index, nullptr);
  ++count_;
}

void HostArray::remove(int32_t index) {
  void* const removed = holdsHandles() ? handleAt(index) : nullptr;
  const size_t size = elementSize();
  std::memmove(slot(index), slot(index) + size, static_cast<size_t>(count_ - index - 1) * size);
  owned_.erase(owned_.begin() + index);
  --count_;
  release(removed, Side::host);  // at last: it may end an object whose destructor changes this array
}

template <class T>
T HostArray::plainAt(int32_t index) const {
  T value;
  read(index, &value);
  return value;
}

Value HostArray::valueAt(int32_t index) {
  switch (kind_) {
    case ElementKind::int32:
      return plainAt<int32_t>(index);
    case ElementKind::int64:
      return plainAt<int64_t>(index);
    case ElementKind::single:
      return plainAt<float>(index);
    case ElementKind::number:
      return plainAt<double>(index);
    case ElementKind::boolean:
      return plainAt<unsigned char>(index) != 0;
    case ElementKind::string:
      return Value::string(Ref::share(handleAt(index)));
    case ElementKind::date:
    case ElementKind::object:
      return Value::object(Ref::share(handleAt(index)));
  }
  return {};
}

bool HostArray::consume(Procedure procedure) {
  const unsigned bit = 1u << procedure;
  const bool had = (granted_ & bit) != 0;
  granted_ &= ~bit;
  return had;
}

HostArray& arrayAt(ObjectHandle handle) {
  Counted& thing = thingAt(handle);
  HostArray* const array = asKind<HostArray>(thing);
  if (!array) dieOfWrongThing(thing, "an array");
  return *array;
}

HostArray& newArray(ElementKind kind, int32_t count, Side owner) {
  return added(new HostArray(kind, count, owner));
}

}  // namespace standin::host
