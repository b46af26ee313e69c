// One-dimensional host arrays.
#pragma once

#include <cstdint>
#include <vector>

#include "standin/host/things/handles.h"

namespace standin::host {

enum class ElementKind { int32, int64, single, number, boolean, string, date, object };

// Where the plug-in can reach the storage it may write elements there itself. The host finds that out when it
// next looks, and takes over the reference that came with the element. The plug-in must release the element
// that was there, before or after.
class HostArray : public Counted {
 public:
  using OfKind = HostArray;
  static constexpr ThingKind kThing = ThingKind::array;

  HostArray(ElementKind kind, int32_t count, Side owner);
  std::string describe() const override;
  BlockName blockName() const override { return {"array"}; }
  void empty() override;
  void end() override;
  bool giveUp(const void* handle) override;

  ElementKind kind() const { return kind_; }
  int32_t count() const { return count_; }
  bool holdsHandles() const { return kind_ >= ElementKind::string; }

  // The index must be one of the array's. Handles are borrowed; storing one shares it.
  void* handleAt(int32_t index);
  void setHandle(int32_t index, void* handle);
  void read(int32_t index, void* out) const;
  void write(int32_t index, const void* value);
  void insertEmpty(int32_t index);  // 0 to count()
  void remove(int32_t index);
  Value valueAt(int32_t index);

  // A procedure may be called once after it was asked for.
  enum Procedure { insert, get, set };
  void grant(Procedure procedure) { granted_ |= 1u << procedure; }
  bool consume(Procedure procedure);

 private:
  size_t elementSize() const;
  size_t storageSize() const { return static_cast<size_t>(capacity_) * elementSize(); }
  template <class T>
  T plainAt(int32_t index) const;
  unsigned char* slot(int32_t index) const { return storage_ + static_cast<size_t>(index) * elementSize(); }
  void grow();
  void publish();
  void noticeDirectWrite(int32_t index);
  bool isOpen() const;

  ElementKind kind_;
  int32_t count_;
  int32_t capacity_;
  unsigned char* storage_;
  std::vector<void*> owned_;  // of the handles in the slots, those whose references are the host's
  unsigned granted_ = 0;
};

// Ends the process when the handle is null, freed or no array's.
HostArray& arrayAt(ObjectHandle handle);
HostArray& newArray(ElementKind kind, int32_t count, Side owner);

}  // namespace standin::host
