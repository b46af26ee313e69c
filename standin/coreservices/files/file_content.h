// What is known of a file from more than the file system's own records: its type, its extended attributes,
// and what its content says about itself.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standin/coreservices/attributes/attributes.h"
#include "standin/coreservices/content/content_reader.h"
#include "standin/coreservices/disk/file_location.h"
#include "standin/coreservices/files/content_type.h"
#include "standin/coreservices/files/text_content.h"

namespace standin::metadata {

// How far one goes to know what is in a file.
enum class Reading {
  Later,   // what takes a reader beside this process isn't known before it has been read
  Now,     // it is waited for; what can't be read isn't known
  Anyway,  // what can't be read counts as though it weren't there, and is noted as unseen
};

// Whether there is no such content in a file whose name promises this type, or null: false where there may
// be. It takes no look at the file's record, which would cost more than all the rest of a search does for a
// file that isn't found. `path` is absolute, with a zero byte after it.
bool isRuledOut(Content content, const ContentType* named, std::string_view path);

// Everything is read when it is first asked for, and kept.
class FileContent {
 public:
  // `named` is the type that the name promises to a regular file, or null.
  FileContent(const FileLocation& file, const ContentType* named, Reading reading)
      : file_(file), namedType_(named), reading_(reading) {}

  // Appends the attribute's values: none when the file has no such attribute. False when they aren't known:
  // a reader would have to be waited for, or they can't be read.
  bool values(FileAttribute attribute, std::vector<Value>& values);
  // The same of its text.
  bool text(std::vector<Value>& values);

  // Asks the readers for what wasn't known. Answers whether there was anything that wasn't asked for already.
  bool askForMissing();
  // Whether there is anything that a reader may still tell.
  bool awaitsReader() const { return missing_[0] || missing_[1]; }

 private:
  const ContentType* type();  // null for devices and the like, which have none
  bool goesWithout(std::string_view missing) const;
  bool isTypeSeen();
  void addExtendedAttribute(std::optional<std::string>& kept, const char* name, std::vector<Value>& values);
  bool tagValues(FileAttribute attribute, std::vector<Value>& values);
  const ContentBytes& bytes(Content content, std::string_view format);
  const ContentType* promisedType() const;
  bool isInStore(Content content, std::string_view format);

  FileLocation file_;
  const ContentType* const namedType_;
  const Reading reading_;
  std::optional<const ContentType*> type_;
  int typeError_ = 0,
      extendedError_ = 0;  // errno's, where the first bytes or extended attributes can't be read
  std::optional<std::string> origin_, referrer_, comment_;
  TextContent plainText_;
  // By Content; null while it isn't known.
  std::array<ContentBytes, 2> bytes_;
  std::array<std::optional<std::string_view>, 2> missing_;  // the format of what was wanted, and isn't known
};

}  // namespace standin::metadata
