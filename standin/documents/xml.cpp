#include "standin/documents/xml.h"

#include <libxml/parser.h>

#include <memory>
#include <new>
#include <string>

#include "standin/documents/callbacks.h"

namespace standin::documents {
namespace {

// libxml2 has five pointers for each attribute: name, prefix, namespace, start and end of the value.
constexpr int kPointersPerAttribute = 5;

std::string_view viewOf(const xmlChar* characters) {
  return reinterpret_cast<const char*>(characters);
}

struct Parsing {
  XmlHandler& handler;
  KeptException exception;
};

void startElement(void* context, const xmlChar* name, const xmlChar*, const xmlChar*, int, const xmlChar**,
                  int attributeCount, int, const xmlChar** attributes) {
  auto& parsing = *static_cast<Parsing*>(context);
  parsing.exception.guard(
      [&] { parsing.handler.start(viewOf(name), XmlAttributes(attributes, attributeCount)); });
}

void endElement(void* context, const xmlChar* name, const xmlChar*, const xmlChar*) {
  auto& parsing = *static_cast<Parsing*>(context);
  parsing.exception.guard([&] { parsing.handler.end(viewOf(name)); });
}

void addCharacters(void* context, const xmlChar* characters, int length) {
  auto& parsing = *static_cast<Parsing*>(context);
  parsing.exception.guard([&] {
    parsing.handler.characters({reinterpret_cast<const char*>(characters), static_cast<size_t>(length)});
  });
}

void ignoreError(void*, const char*, ...) {}

struct FreeParser {
  void operator()(xmlParserCtxt* parser) const {
    xmlFreeDoc(parser->myDoc);  // made for the entities that a document declares
    xmlFreeParserCtxt(parser);
  }
};

using Parser = std::unique_ptr<xmlParserCtxt, FreeParser>;

// With no function that finds an entity, none is expanded.
Parser makeParser(Parsing& parsing) {
  xmlSAXHandler callbacks{};
  callbacks.initialized = XML_SAX2_MAGIC;
  callbacks.startElementNs = startElement;
  callbacks.endElementNs = endElement;
  callbacks.characters = addCharacters;
  callbacks.ignorableWhitespace = addCharacters;
  callbacks.cdataBlock = addCharacters;
  callbacks.warning = ignoreError;
  callbacks.error = ignoreError;
  Parser parser(xmlCreatePushParserCtxt(&callbacks, &parsing, nullptr, 0, nullptr));
  if (!parser) throw std::bad_alloc();
  xmlCtxtUseOptions(parser.get(), XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  return parser;
}

void push(xmlParserCtxt& parser, std::string_view bytes, bool isLast, const Parsing& parsing,
          std::string_view entry) {
  xmlParseChunk(&parser, bytes.data(), static_cast<int>(bytes.size()), isLast);
  parsing.exception.rethrow();
  if (parser.errNo == XML_ERR_NO_MEMORY) throw std::bad_alloc();
  if (!parser.wellFormed) {
    throw DocumentError("is damaged: what it holds as " + std::string(entry) + " is no well-formed XML");
  }
}

}  // namespace

std::string_view XmlAttributes::operator[](std::string_view name) const {
  for (int i = 0; i < count_; ++i) {
    const xmlChar** const attribute = attributes_ + i * kPointersPerAttribute;
    if (viewOf(attribute[0]) != name) continue;
    return {reinterpret_cast<const char*>(attribute[3]), static_cast<size_t>(attribute[4] - attribute[3])};
  }
  return {};
}

void parseXml(ZipArchive& archive, XmlHandler& handler) {
  Parsing parsing{handler, {}};
  const Parser parser = makeParser(parsing);
  const std::string entry(archive.name());
  for (std::string_view bytes; !(bytes = archive.read()).empty();) {
    push(*parser, bytes, false, parsing, entry);
    if (handler.isDone()) return;
  }
  push(*parser, {}, true, parsing, entry);
}

}  // namespace standin::documents
