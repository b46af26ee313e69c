#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "standin/documents/formats.h"
#include "standin/documents/office_text.h"

namespace standin::documents {
namespace {

constexpr ElementRow kElements[] = {
    {"t", Part::Text},
    {"v", Part::Text},  // a cell's value
    {"p", Part::Break},
    {"br", Part::Break},
    {"cr", Part::Break},
    {"tab", Part::Break},
    {"ptab", Part::Break},
    {"tc", Part::Break},
    {"c", Part::Break},
    {"si", Part::Break},
    {"pt", Part::Break},  // of a chart
    {"comment", Part::Break},
    {"footnoteReference", Part::Break},
    {"endnoteReference", Part::Break},
    {"text", Part::Block},     // of a comment
    {"Fallback", Part::Skip},  // the same once more, for old programs
    {"rPh", Part::Skip},       // how a word is pronounced
    {"rt", Part::Skip},        // likewise
};

// The content types of the parts that have text end so. Layouts and masters, which have the text that a new
// slide is to show, aren't among them.
constexpr std::string_view kTextParts[] = {
    "main+xml",     "header+xml",      "footer+xml", "footnotes+xml",        "endnotes+xml",
    "comments+xml", "worksheet+xml",   "slide+xml",  "sharedstrings+xml",    "notesslide+xml",
    "drawing+xml",  "diagramdata+xml", "chart+xml",  "threadedcomments+xml",
};

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

// [Content_Types].xml: what each part is, by its name or the extension of its name, in any case of letters.
class ContentTypes : public XmlHandler {
 public:
  void start(std::string_view name, const XmlAttributes& attributes) override {
    const std::string type = lowerCase(attributes["ContentType"]);
    if (name == "Default") ofExtensions_[lowerCase(attributes["Extension"])] = type;
    if (name == "Override") ofParts_[lowerCase(attributes["PartName"])] = type;
  }
  void end(std::string_view) override {}
  void characters(std::string_view) override {}

  bool hasText(std::string_view entry) const {
    const std::string part = '/' + lowerCase(entry);
    auto type = ofParts_.find(part);
    if (type == ofParts_.end()) {
      type = ofExtensions_.find(part.substr(part.rfind('.') + 1));
      if (type == ofExtensions_.end()) return false;
    }
    const std::string_view last = std::string_view(type->second).substr(type->second.rfind('.') + 1);
    return std::ranges::find(kTextParts, last) != std::end(kTextParts);
  }

 private:
  std::map<std::string, std::string> ofParts_, ofExtensions_;
};

class OpenXmlText : public OfficeText {
 public:
  explicit OpenXmlText(Text& text) : OfficeText(kElements, text) {}

  void start(std::string_view name, const XmlAttributes& attributes) override {
    if (name == "c") cellType_ = attributes["t"];
    if (name == "v") inValue_ = true;
    OfficeText::start(name, attributes);
  }

  void end(std::string_view name) override {
    if (name == "c") cellType_.clear();
    if (name == "v") inValue_ = false;
    OfficeText::end(name);
  }

  // The values of such cells are the number of a shared string, a flag, an error.
  void characters(std::string_view characters) override {
    if (inValue_ && (cellType_ == "s" || cellType_ == "b" || cellType_ == "e")) return;
    OfficeText::characters(characters);
  }

 private:
  std::string cellType_;
  bool inValue_ = false;
};

}  // namespace

void readOpenXml(int file, const Deadline& deadline, Text& text) {
  ZipArchive archive(file, deadline, "Office Open XML file");
  std::optional<ContentTypes> types;
  while (!types && archive.next()) {
    if (archive.name() == "[Content_Types].xml") parseXml(archive, types.emplace());
  }
  if (!types) throw DocumentError("is no Office Open XML file: it holds no [Content_Types].xml");
  archive.rewind();
  while (!text.isFull() && archive.next()) {
    if (!types->hasText(archive.name())) continue;
    OpenXmlText handler(text);
    parseXml(archive, handler);
    text.addBlank();
  }
}

}  // namespace standin::documents
