#include "standin/documents/html_text.h"

#include <libxml/HTMLparser.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <memory>
#include <new>
#include <span>

#include "standin/documents/callbacks.h"
#include "standin/documents/html_encoding.h"

namespace standin::documents {
namespace {

// Elements that may lie inside a word. All others part what is before them from what is inside and after.
constexpr std::string_view kInline[] = {
    "a",    "abbr",  "acronym", "b",      "bdi",    "bdo",   "big",  "cite", "code", "data", "del",  "dfn",
    "em",   "font",  "i",       "ins",    "kbd",    "label", "mark", "nobr", "q",    "rb",   "ruby", "s",
    "samp", "small", "span",    "strike", "strong", "sub",   "sup",  "time", "tt",   "u",    "var",  "wbr",
};

// Elements whose content nobody sees, or sees beside the line ("rt").
constexpr std::string_view kSkipped[] = {"script", "style", "noscript", "template", "rt", "rp"};

bool isAmong(std::span<const std::string_view> names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

class PageText {
 public:
  explicit PageText(Text& text) : text_(text) {}

  void start(std::string_view name) {
    ++depth_;
    if (skippedAt_ == 0 && isAmong(kSkipped, name)) skippedAt_ = depth_;
    part(name);
  }

  void end(std::string_view name) {
    part(name);
    if (skippedAt_ == depth_) skippedAt_ = 0;
    --depth_;
  }

  void characters(std::string_view characters) {
    if (skippedAt_ == 0) text_.add(characters);
  }

  KeptException exception;

 private:
  void part(std::string_view name) {
    if (skippedAt_ == 0 && !isAmong(kInline, name)) text_.addBlank();
  }

  Text& text_;
  int depth_ = 0;
  int skippedAt_ = 0;  // the depth of the outermost element that is skipped; 0 outside
};

PageText& pageOf(void* context) {
  return *static_cast<PageText*>(context);
}

std::string_view viewOf(const xmlChar* characters) {
  return reinterpret_cast<const char*>(characters);
}

void startElement(void* context, const xmlChar* name, const xmlChar**) {
  pageOf(context).exception.guard([&] { pageOf(context).start(viewOf(name)); });
}

void endElement(void* context, const xmlChar* name) {
  pageOf(context).exception.guard([&] { pageOf(context).end(viewOf(name)); });
}

void addCharacters(void* context, const xmlChar* characters, int length) {
  pageOf(context).exception.guard([&] {
    pageOf(context).characters({reinterpret_cast<const char*>(characters), static_cast<size_t>(length)});
  });
}

void ignoreError(void*, const char*, ...) {}

struct FreeParser {
  void operator()(htmlParserCtxt* parser) const {
    xmlFreeDoc(parser->myDoc);
    htmlFreeParserCtxt(parser);
  }
};

using Parser = std::unique_ptr<htmlParserCtxt, FreeParser>;

Parser makeParser(PageText& page) {
  htmlSAXHandler callbacks{};
  callbacks.startElement = startElement;
  callbacks.endElement = endElement;
  callbacks.characters = addCharacters;
  callbacks.ignorableWhitespace = addCharacters;
  callbacks.cdataBlock = addCharacters;
  callbacks.warning = ignoreError;
  callbacks.error = ignoreError;
  Parser parser(htmlCreatePushParserCtxt(&callbacks, &page, nullptr, 0, nullptr, XML_CHAR_ENCODING_UTF8));
  if (!parser) throw std::bad_alloc();
  constexpr int kOptions = HTML_PARSE_RECOVER | HTML_PARSE_NONET | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING |
                           HTML_PARSE_IGNORE_ENC;
  htmlCtxtUseOptions(parser.get(), kOptions);
  return parser;
}

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};

using Converter = std::unique_ptr<UConverter, CloseConverter>;

Converter openConverter(const char* encoding) {
  UErrorCode error = U_ZERO_ERROR;
  Converter converter(ucnv_open(encoding, &error));
  if (!converter) throw std::bad_alloc();
  return converter;
}

// Calls `use` with the page in pieces of UTF-8, none of which cuts a character or holds a zero byte; until it
// answers false.
template <typename Use>
void convert(std::string_view page, Use use) {
  const Converter from = openConverter(encodingOfHtml(page).c_str());
  const Converter to = openConverter("UTF-8");
  UChar pivot[4096];
  UChar* pivotSource = pivot;
  UChar* pivotTarget = pivot;
  char utf8[16384];
  const char* source = page.data();
  const char* const end = page.data() + page.size();
  UErrorCode error = U_BUFFER_OVERFLOW_ERROR;
  for (bool isFirst = true; error == U_BUFFER_OVERFLOW_ERROR; isFirst = false) {
    char* target = utf8;
    error = U_ZERO_ERROR;
    ucnv_convertEx(to.get(), from.get(), &target, utf8 + sizeof utf8, &source, end, pivot, &pivotSource,
                   &pivotTarget, pivot + std::size(pivot), isFirst, true, &error);
    std::replace(utf8, target, '\0', ' ');
    if (!use(std::string_view(utf8, static_cast<size_t>(target - utf8)))) return;
  }
}

}  // namespace

void addHtml(std::string_view page, const Deadline& deadline, Text& text) {
  PageText pageText(text);
  const Parser parser = makeParser(pageText);
  const auto push = [&](std::string_view bytes, bool isLast) {
    deadline.check();
    htmlParseChunk(parser.get(), bytes.data(), static_cast<int>(bytes.size()), isLast);
    pageText.exception.rethrow();
    if (parser->errNo == XML_ERR_NO_MEMORY) throw std::bad_alloc();
    return !text.isFull();
  };
  convert(page, [&](std::string_view utf8) { return push(utf8, false); });
  push({}, true);
  text.addBlank();
}

}  // namespace standin::documents
