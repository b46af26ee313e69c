// Uniform type identifiers: what a file's content is, by its MIME type, its name or its first bytes.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace standin::metadata {

enum class Metadata { None, Embedded };

struct ContentType {
  std::string_view identifier;
  std::string_view conformsTo;  // identifiers, with spaces between them
  std::string_view kind;        // in words; empty for types that no file is of by itself
  std::string_view extensions;  // in lower case, with spaces between them
  std::string_view mimeTypes;   // likewise
  Metadata metadata =
      Metadata::None;  // whether such content may describe itself: a title, a camera, a length
};

// Null for an identifier that isn't known.
const ContentType* contentTypeNamed(std::string_view identifier);

// Null for a MIME type that isn't known. Parameters (`; charset=...`) and case don't matter.
const ContentType* contentTypeOfMime(std::string_view mimeType);

// By what follows the name's last dot, in any case. Null when nothing does, or when it isn't known. Folders
// and files have extensions of their own: a folder called "a.txt" is no text.
enum class Node { File, Folder };
const ContentType* contentTypeOfName(std::string_view name, Node node);

// By the first bytes of a file's content, of which kSignatureLength are always enough. Null when they say
// nothing.
constexpr size_t kSignatureLength = 1024;
const ContentType* contentTypeOfBytes(std::string_view bytes);

// The type and all that it conforms to, each once, every one before all those that it conforms to itself.
const std::vector<std::string_view>& contentTypeTree(const ContentType& type);

// What the text of a file of this type is read by. Plain text is what the file holds as it stands, if that is
// text at all; also where the type isn't known, as of a README or a script that may be run. Of other types
// than these, pictures and archives say, no text is known.
enum class Text { None, Plain, Pdf, OpenDocument, OpenXml, Epub, Html, Rtf };
Text textOf(const ContentType& type);

}  // namespace standin::metadata
