#include "standin/coreservices/files/file_content.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "standin/coreservices/content/text_reader.h"
#include "standin/coreservices/disk/descriptor.h"
#include "standin/coreservices/disk/unseen.h"
#include "standin/coreservices/media/media_attributes.h"
#include "standin/coreservices/media/media_table.h"

namespace standin::metadata {
namespace {

constexpr char kMimeType[] = "user.mime_type";  // of more weight than the name

// The largest that Linux keeps.
constexpr size_t kLongestExtendedAttribute = 65536;

// The system takes no folder for extended attributes. By its own path a file is found in half the time that
// it takes by the folder that is open, which is for paths that are too long.
std::string pathThroughFolder(const FileLocation& file) {
  return "/proc/self/fd/" + std::to_string(file.folder) + '/' + file.pathFromFolder;
}

// Empty when there is none, as on a file system that keeps none. Sets `error` where there may be one.
std::string readExtendedAttribute(const FileLocation& file, const char* name, int& error) {
  char small[256];
  const bool isLong = file.path.size() >= PATH_MAX;
  const std::string throughFolder = isLong ? pathThroughFolder(file) : "";
  const char* const path = isLong ? throughFolder.c_str() : file.path.data();
  ssize_t size = ::lgetxattr(path, name, small, sizeof small);
  std::string value;
  if (size >= 0) {
    value.assign(small, static_cast<size_t>(size));
  } else if (errno == ERANGE) {
    value.resize(kLongestExtendedAttribute);
    size = ::lgetxattr(path, name, value.data(), value.size());
    value.resize(static_cast<size_t>(std::max<ssize_t>(size, 0)));
  } else if (errno == EACCES || errno == EIO) {
    error = errno;
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

// Sets `error` where they can't be read.
std::string firstBytes(const FileLocation& file, int& error) {
  std::string bytes;
  if (file.info.stx_size == 0) return bytes;
  const Descriptor descriptor = openToLook(file);
  if (descriptor) bytes.resize(kSignatureLength);
  const ssize_t size = descriptor ? ::read(descriptor.get(), bytes.data(), bytes.size()) : -1;
  if (size < 0 && !meansGone(errno)) error = errno;
  bytes.resize(static_cast<size_t>(std::max<ssize_t>(size, 0)));
  return bytes;
}

// `named` is what the name promises, or null. Sets `error` where it takes a look at the bytes, and they can't
// be read.
const ContentType* typeOfRegularFile(const FileLocation& file, const ContentType* named, int& error) {
  int noMatter = 0;  // the name tells as well, and otherwise the bytes can't be read, either
  const std::string mimeType = readExtendedAttribute(file, kMimeType, noMatter);
  if (const auto* const type = contentTypeOfMime(mimeType)) return type;
  if (named) return named;
  if (const auto* const type = contentTypeOfBytes(firstBytes(file, error))) return type;
  return contentTypeNamed(file.info.stx_mode & S_IXUSR ? "public.unix-executable" : "public.data");
}

// Null for devices and the like.
const ContentType* typeOfOther(const FileLocation& file) {
  switch (file.info.stx_mode & S_IFMT) {
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

bool mayHave(Content content, const ContentType& type) {
  return content == Content::Tags ? mayHaveTags(&type) : textOf(type) != Text::None;
}

}  // namespace

bool isRuledOut(Content content, const ContentType* named, std::string_view path) {
  if (!named || mayHave(content, *named) || path.size() >= PATH_MAX) return false;
  return ::lgetxattr(path.data(), kMimeType, nullptr, 0) < 0 && (errno == ENODATA || errno == ENOTSUP);
}

const ContentType* FileContent::type() {
  if (!type_)
    type_ =
        S_ISREG(file_.info.stx_mode) ? typeOfRegularFile(file_, namedType_, typeError_) : typeOfOther(file_);
  return *type_;
}

// What is missing isn't known, or counts as nothing. Of a file that went while it was read, nothing is
// missing.
bool FileContent::goesWithout(std::string_view missing) const {
  if (reading_ != Reading::Anyway) return false;
  if (::faccessat(file_.folder, file_.pathFromFolder, F_OK, AT_SYMLINK_NOFOLLOW) != 0 && meansGone(errno))
    return true;
  noteUnseenFile(file_.path, missing);
  return true;
}

bool FileContent::isTypeSeen() {
  type();
  return typeError_ == 0 || goesWithout(cannotBeRead(typeError_));
}

void FileContent::addExtendedAttribute(std::optional<std::string>& kept, const char* name,
                                       std::vector<Value>& values) {
  if (!kept) kept = readExtendedAttribute(file_, name, extendedError_);
  if (!kept->empty()) values.emplace_back(*kept);
}

const ContentBytes& FileContent::bytes(Content content, std::string_view format) {
  ContentBytes& bytes = bytes_[static_cast<size_t>(content)];
  if (bytes) return bytes;
  bytes = reading_ == Reading::Later ? contentReader().known(content, file_, format)
                                     : contentReader().read(content, file_, format);
  if (!bytes) missing_[static_cast<size_t>(content)] = format;
  return bytes;
}

// The type takes a look at the file. What is in the store was put there by its type, and whatever changes
// that changes the file's state, too; so where the name promises such a type, the store is looked at first.
const ContentType* FileContent::promisedType() const {
  return type_ ? *type_ : namedType_;
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
  if (!isKnown && !isTypeSeen()) return false;
  if (!isKnown && !mayHaveTags(type())) return true;
  const ContentBytes& tags = bytes(Content::Tags, {});
  if (!tags) return false;
  decodeValues(tags->bytes, attribute, values);
  return tags->isWhole || goesWithout(tags->missing);
}

bool FileContent::text(std::vector<Value>& values) {
  if (!S_ISREG(file_.info.stx_mode)) return true;
  const ContentType* const named = promisedType();
  const bool isKnown = isDocument(named) && isInStore(Content::Text, formatOf(textOf(*named)));
  if (!isKnown && !isTypeSeen()) return false;
  const ContentType* const actual = isKnown ? named : type();
  if (!actual || textOf(*actual) == Text::None) return true;
  if (textOf(*actual) == Text::Plain) {
    if (const auto text = plainText_.read(file_.folder, file_.pathFromFolder)) values.emplace_back(*text);
    return plainText_.missing().empty() || goesWithout(plainText_.missing());
  }
  if (file_.info.stx_size == 0) return true;  // no document at all
  const ContentBytes& text = bytes(Content::Text, formatOf(textOf(*actual)));
  if (!text) return false;
  if (!text->bytes.empty()) values.emplace_back(text->bytes);
  return text->isWhole || goesWithout(text->missing);
}

bool FileContent::values(FileAttribute attribute, std::vector<Value>& values) {
  const auto addText = [&](std::string_view text) {
    if (!text.empty()) values.emplace_back(text);
  };
  switch (attribute) {
    case FileAttribute::ContentType:
      if (!isTypeSeen()) return false;
      if (type()) addText(type()->identifier);
      return true;
    case FileAttribute::ContentTypeTree:
      if (!isTypeSeen()) return false;
      if (type()) std::ranges::for_each(contentTypeTree(*type()), addText);
      return true;
    case FileAttribute::Kind:
      if (!isTypeSeen()) return false;
      if (type()) addText(type()->kind);
      return true;
    case FileAttribute::WhereFroms:
      addExtendedAttribute(origin_, "user.xdg.origin.url", values);
      addExtendedAttribute(referrer_, "user.xdg.referrer.url", values);
      return extendedError_ == 0 || goesWithout(cannotBeRead(extendedError_));
    case FileAttribute::FinderComment:
      addExtendedAttribute(comment_, "user.xdg.comment", values);
      return extendedError_ == 0 || goesWithout(cannotBeRead(extendedError_));
    default:
      return tagValues(attribute, values);
  }
}

}  // namespace standin::metadata
