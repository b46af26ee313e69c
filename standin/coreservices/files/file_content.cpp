#include "standin/coreservices/files/file_content.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "standin/coreservices/content/text_reader.h"
#include "standin/coreservices/disk/descriptor.h"
#include "standin/coreservices/media/media_attributes.h"
#include "standin/coreservices/media/media_table.h"

namespace standin::metadata {
namespace {

// The largest that Linux keeps.
constexpr size_t kLongestExtendedAttribute = 65536;

// The system takes no folder for extended attributes. By its own path a file is found in half the time that
// it takes by the folder that is open, which is for paths that are too long.
std::string reachablePath(const FileLocation& file) {
  if (file.path.size() < PATH_MAX) return std::string(file.path);
  return "/proc/self/fd/" + std::to_string(file.folder) + '/' + file.pathFromFolder;
}

// Empty when there is none, as on a file system that keeps none.
std::string readExtendedAttribute(const FileLocation& file, const char* name) {
  char small[256];
  const std::string path = reachablePath(file);
  ssize_t size = ::lgetxattr(path.c_str(), name, small, sizeof small);
  std::string value;
  if (size >= 0) {
    value.assign(small, static_cast<size_t>(size));
  } else if (errno == ERANGE) {
    value.resize(kLongestExtendedAttribute);
    size = ::lgetxattr(path.c_str(), name, value.data(), value.size());
    value.resize(static_cast<size_t>(std::max<ssize_t>(size, 0)));
  }
  while (!value.empty() && value.back() == '\0') value.pop_back();
  return value;
}

// Reading a file's type leaves no trace in it where the system allows that.
Descriptor openToLook(const FileLocation& file) {
  constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const int fd = ::openat(file.folder, file.pathFromFolder, kFlags | O_NOATIME);
  return Descriptor(fd >= 0 ? fd : ::openat(file.folder, file.pathFromFolder, kFlags));
}

std::string firstBytes(const FileLocation& file) {
  std::string bytes;
  if (file.info.stx_size == 0) return bytes;
  const Descriptor descriptor = openToLook(file);
  if (!descriptor) return bytes;
  bytes.resize(kSignatureLength);
  const ssize_t size = ::read(descriptor.get(), bytes.data(), bytes.size());
  bytes.resize(static_cast<size_t>(std::max<ssize_t>(size, 0)));
  return bytes;
}

const ContentType* typeOfRegularFile(const FileLocation& file) {
  const std::string mimeType = readExtendedAttribute(file, "user.mime_type");
  if (const auto* const type = contentTypeOfMime(mimeType)) return type;
  if (const auto* const type = contentTypeOfName(file.name, Node::File)) return type;
  if (const auto* const type = contentTypeOfBytes(firstBytes(file))) return type;
  return contentTypeNamed(file.info.stx_mode & S_IXUSR ? "public.unix-executable" : "public.data");
}

// Null for devices and the like.
const ContentType* typeOf(const FileLocation& file) {
  switch (file.info.stx_mode & S_IFMT) {
    case S_IFREG:
      return typeOfRegularFile(file);
    case S_IFDIR: {
      const ContentType* const type = contentTypeOfName(file.name, Node::Folder);
      return type ? type : contentTypeNamed("public.folder");
    }
    case S_IFLNK:
      return contentTypeNamed("public.symlink");
    default:
      return nullptr;
  }
}

// The formats follow each other as these do.
static_assert(static_cast<size_t>(Text::Rtf) - static_cast<size_t>(Text::Pdf) + 1 == std::size(kTextFormats));
std::string_view formatOf(Text text) {
  return kTextFormats[static_cast<size_t>(text) - static_cast<size_t>(Text::Pdf)];
}

bool isDocument(const ContentType* type) {
  return type && textOf(*type) != Text::None && textOf(*type) != Text::Plain;
}

bool mayHaveTags(const ContentType* type) {
  return type && type->metadata == Metadata::Embedded;
}

}  // namespace

bool mayTakeReader(FileAttribute attribute) {
  return isMediaAttribute(attribute);
}

const ContentType* FileContent::type() {
  if (!type_) type_ = typeOf(file_);
  return *type_;
}

const std::string& FileContent::extendedAttribute(std::optional<std::string>& kept, const char* name) {
  if (!kept) kept = readExtendedAttribute(file_, name);
  return *kept;
}

const ContentBytes& FileContent::bytes(Content content, std::string_view format) {
  ContentBytes& bytes = bytes_[static_cast<size_t>(content)];
  if (bytes) return bytes;
  bytes = reading_ == Reading::Now ? contentReader().read(content, file_, format)
                                   : contentReader().known(content, file_, format);
  if (!bytes) missing_[static_cast<size_t>(content)] = format;
  return bytes;
}

// The type takes a look at the file. What is in the store was put there by its type, and whatever changes
// that changes the file's state, too; so where the name promises such a type, the store is looked at first.
const ContentType* FileContent::promisedType() const {
  return type_ ? *type_ : contentTypeOfName(file_.name, Node::File);
}

bool FileContent::isInStore(Content content, std::string_view format) {
  ContentBytes& bytes = bytes_[static_cast<size_t>(content)];
  if (!bytes) bytes = contentReader().known(content, file_, format);
  return bytes != nullptr;
}

bool FileContent::askForMissing() {
  bool any = false;
  for (const Content content : {Content::Tags, Content::Text}) {
    std::optional<std::string_view>& format = missing_[static_cast<size_t>(content)];
    if (format && contentReader().ask(content, file_, *format)) any = true;
  }
  return any;
}

bool FileContent::tagValues(FileAttribute attribute, std::vector<Value>& values) {
  if (!isMediaAttribute(attribute)) return true;
  if (!S_ISREG(file_.info.stx_mode)) return true;
  const ContentType* const named = promisedType();
  const bool isKnown = mayHaveTags(named) && isInStore(Content::Tags, {});
  if (!isKnown && !mayHaveTags(type())) return true;
  const ContentBytes& tags = bytes(Content::Tags, {});
  if (tags) decodeValues(*tags, attribute, values);
  return tags != nullptr;
}

bool FileContent::text(std::vector<Value>& values) {
  if (!S_ISREG(file_.info.stx_mode)) return true;
  const ContentType* const named = promisedType();
  const bool isKnown = isDocument(named) && isInStore(Content::Text, formatOf(textOf(*named)));
  const ContentType* const actual = isKnown ? named : type();
  if (!actual || textOf(*actual) == Text::None) return true;
  if (textOf(*actual) == Text::Plain) {
    if (const auto text = plainText_.read(file_.folder, file_.pathFromFolder)) values.emplace_back(*text);
    return true;
  }
  if (file_.info.stx_size == 0) return true;  // no document at all
  const ContentBytes& text = bytes(Content::Text, formatOf(textOf(*actual)));
  if (text && !text->empty()) values.emplace_back(*text);
  return text != nullptr;
}

bool FileContent::values(FileAttribute attribute, std::vector<Value>& values) {
  const auto addText = [&](std::string_view text) {
    if (!text.empty()) values.emplace_back(text);
  };
  switch (attribute) {
    case FileAttribute::ContentType:
      if (type()) addText(type()->identifier);
      return true;
    case FileAttribute::ContentTypeTree:
      if (type()) std::ranges::for_each(contentTypeTree(*type()), addText);
      return true;
    case FileAttribute::Kind:
      if (type()) addText(type()->kind);
      return true;
    case FileAttribute::WhereFroms:
      addText(extendedAttribute(origin_, "user.xdg.origin.url"));
      addText(extendedAttribute(referrer_, "user.xdg.referrer.url"));
      return true;
    case FileAttribute::FinderComment:
      addText(extendedAttribute(comment_, "user.xdg.comment"));
      return true;
    default:
      return tagValues(attribute, values);
  }
}

}  // namespace standin::metadata
