// Instances of the family's wrapper classes, which the plug-in fills and reads by their bytes.
#include <CoreFoundation/CoreFoundation.h>

#include <cstring>
#include <memory>
#include <stdexcept>

#include "standin/gate/gate.h"
#include "standin/host/host.h"
#include "standin/host/machine/machine_call.h"
#include "standin/host/state/runtime.h"
#include "standin/host/things/objects.h"

namespace standin::host {
namespace {

constexpr size_t kBlockSize = 64;
constexpr size_t kContentOffset = 24;  // of the reference, or the first of four doubles
constexpr int kReferenceWord = kContentOffset / 4;
constexpr int kTagWord = 32 / 4;
constexpr uint32_t kFamilyTag = 0x52424346;  // 'RBCF'
constexpr size_t kMostNumbers = 4;

class HostWrapper : public HostObject {
 public:
  HostWrapper(const Class& cls, Side owner);
  void end() override;

  CFTypeRef reference() const { return addressIn(words()[kReferenceWord]); }
  void setReference(CFTypeRef reference);
  unsigned char* content() const { return static_cast<unsigned char*>(block()) + kContentOffset; }

 private:
  bool filledByHost_ = false;
};

HostWrapper::HostWrapper(const Class& classOfIt, Side owner) : HostObject(classOfIt, owner, kBlockSize) {
  if (cls.genuine) words()[kTagWord] = kFamilyTag;
}

void HostWrapper::setReference(CFTypeRef reference) {
  const CFTypeRef before = this->reference();
  words()[kReferenceWord] = wordOf(reference);
  filledByHost_ = true;
  if (before) CFRelease(before);
}

void HostWrapper::end() {
  if (cls.wraps == Class::Wraps::reference) {
    const bool tagged = words()[kTagWord] == kFamilyTag;
    if (cls.genuine && !tagged) die(currentCall(), "the tag of the " + describe() + " was overwritten");
    if (reference() && !tagged && !filledByHost_) {
      die(currentCall(), "a reference was put into the " + describe() + ", which has no tag");
    }
    if (reference()) CFRelease(reference());
  }
  HostObject::end();
}

HostObject* makeWrapper(const Class& cls, Side owner) {
  return new HostWrapper(cls, owner);
}

void addClass(std::string_view name, Class::Wraps wraps, bool genuine, std::string_view base) {
  ClassTable& classes = runtime().classes;
  if (classes.find(name)) throw std::logic_error("the class " + std::string(name) + " is there already");
  auto cls = std::make_unique<Class>();
  cls->name = name;
  cls->base = base.empty() ? nullptr : classes.find(base);
  if (!base.empty() && !cls->base) throw std::logic_error("no class " + std::string(base));
  cls->make = makeWrapper;
  cls->wraps = wraps;
  cls->genuine = genuine;
  classes.add(std::move(cls));
}

HostWrapper& wrapperIn(const Value& value, Class::Wraps wraps) {
  auto* const wrapper = dynamic_cast<HostWrapper*>(&instanceIn(value, "wrapped content asked of"));
  if (!wrapper || wrapper->cls.wraps != wraps) {
    const char* const wanted = wraps == Class::Wraps::reference ? "reference" : "geometry";
    throw CallError(std::string("no wrapper of a ") + wanted + " but " + value.describe());
  }
  return *wrapper;
}

}  // namespace

void addWrapperClass(std::string_view name, bool genuine, std::string_view base) {
  addClass(name, Class::Wraps::reference, genuine, base);
}

void addGeometryClass(std::string_view name) {
  addClass(name, Class::Wraps::geometry, false, {});
}

Value geometry(std::string_view className, const std::vector<double>& numbers) {
  if (numbers.size() > kMostNumbers) throw CallError("more than four numbers of a geometry");
  const Value made = newInstance(className);
  const HostWrapper& wrapper = wrapperIn(made, Class::Wraps::geometry);
  std::memcpy(wrapper.content(), numbers.data(), numbers.size() * sizeof(double));
  return made;
}

std::vector<double> numbers(const Value& geometry) {
  std::vector<double> result(kMostNumbers);
  const HostWrapper& wrapper = wrapperIn(geometry, Class::Wraps::geometry);
  std::memcpy(result.data(), wrapper.content(), kMostNumbers * sizeof(double));
  return result;
}

const void* wrapped(const Value& wrapper) {
  return wrapperIn(wrapper, Class::Wraps::reference).reference();
}

void setWrapped(const Value& wrapper, const void* reference) {
  wrapperIn(wrapper, Class::Wraps::reference).setReference(reference);
}

uint32_t wrapperTag(const Value& wrapper) {
  return wrapperIn(wrapper, Class::Wraps::reference).words()[kTagWord];
}

}  // namespace standin::host
