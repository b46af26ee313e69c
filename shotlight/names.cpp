#include "shotlight/names.h"

#include "standin/coreservices/metadata/control.h"

namespace shotlight {

namespace host = standin::host;

namespace {

const char kPath[] = "kMDItemPath";

}  // namespace

std::string pathOf(const host::Value& item) {
  const auto handle = static_cast<uintptr_t>(host::get(item, "Handle").integer());
  return standin::pathOfItem(reinterpret_cast<const void*>(handle));
}

bool isFileName(const std::string& key) {
  return key == kPath || key == "kMDItemFSName" || key == "kMDItemDisplayName";
}

bool mayBeInexact(const host::Value& told) {
  return !told.isNil() && told.bytes().find('%') != std::string::npos;
}

host::Value exactName(const host::Value& item, const std::string& key, const host::Value& told) {
  if (!mayBeInexact(told)) return told;
  const std::string path = pathOf(item);
  return key == kPath ? path : path.substr(path.rfind('/') + 1);
}

}  // namespace shotlight
