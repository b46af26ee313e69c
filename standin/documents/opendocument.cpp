#include <string_view>

#include "standin/documents/formats.h"
#include "standin/documents/office_text.h"

namespace standin::documents {
namespace {

constexpr ElementRow kElements[] = {
    {"p", Part::Block},
    {"h", Part::Block},
    {"s", Part::Break},
    {"tab", Part::Break},
    {"line-break", Part::Break},
    {"annotation", Part::Break},
    {"note", Part::Break},
    // Inside paragraphs, but no text of theirs.
    {"creator", Part::Skip},
    {"date", Part::Skip},
    {"note-citation", Part::Skip},
    {"page-number", Part::Skip},
    {"ruby-text", Part::Skip},
    {"title", Part::Skip},  // of a drawing
    {"desc", Part::Skip},
    {"tracked-changes", Part::Skip},  // what was deleted
};

class EncryptionFinder : public XmlHandler {
 public:
  void start(std::string_view name, const XmlAttributes&) override {
    if (name == "encryption-data") throw DocumentError("is encrypted");
  }
  void end(std::string_view) override {}
  void characters(std::string_view) override {}
};

}  // namespace

void readOpenDocument(int file, const Deadline& deadline, Text& text) {
  ZipArchive archive(file, deadline, "OpenDocument file");
  while (archive.next()) {
    if (archive.name() != "META-INF/manifest.xml") continue;
    EncryptionFinder finder;
    parseXml(archive, finder);
  }
  archive.rewind();
  bool hasContent = false;
  while (!text.isFull() && archive.next()) {
    const bool isContent = archive.name() == "content.xml";
    if (!isContent && archive.name() != "styles.xml") continue;  // which has the headers and footers
    hasContent |= isContent;
    OfficeText handler(kElements, text);
    parseXml(archive, handler);
    text.addBlank();
  }
  if (!hasContent && !text.isFull()) throw DocumentError("is no OpenDocument file: it holds no content.xml");
}

}  // namespace standin::documents
