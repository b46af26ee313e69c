// One-dimensional host arrays.
#pragma once

#include <cstdint>
#include <vector>

#include "standin/host/handles.h"

namespace standin::host {

enum class ElementKind { int32, int64, single, number, boolean, string, date, object };

// Where the storage is open to the plug-in it may put elements there itself; the host notices when it next
// looks, and takes over the reference that came with the element. The element that stood there before is the
// plug-in's to release; it may do that first.
class HostArray : public Counted {
 public:
  HostArray(ElementKind kind, int32_t count, Side owner);
  std::string describe() const override;
  void end() override;
  bool surrenders(const void* handle) override;

  ElementKind kind() const { return kind_; }
  int32_t count() const { return count_; }
  bool holdsHandles() const { return kind_ >= ElementKind::string; }

  // The index must be one of the array's. Handles are borrowed; storing one shares it.
  void* handleAt(int32_t index);
  void setHandle(int32_t index, void* handle);
  void read(int32_t index, void* out) const;
  void write(int32_t index, const void* value);
  void insertEmpty(int32_t index);  // 0 to count()
  Value valueAt(int32_t index);

  // A procedure serves one call: it is asked for anew before each.
  enum Procedure { insert, get, set };
  void grant(Procedure procedure) { granted_ |= 1u << procedure; }
  bool consume(Procedure procedure);

 private:
  std::size_t elementSize() const;
  unsigned char* slot(int32_t index) const {
    return storage_ + static_cast<std::size_t>(index) * elementSize();
  }
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
