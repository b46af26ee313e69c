// Parsing of XML by libxml2, piece by piece. No entity but XML's own five is expanded, nothing is fetched.
#pragma once

#include <string_view>

#include "standin/documents/text.h"
#include "standin/documents/zip.h"

namespace standin::documents {

// The attributes of an element, good during the call that has them.
class XmlAttributes {
 public:
  XmlAttributes(const unsigned char** attributes, int count) : attributes_(attributes), count_(count) {}

  // By its name without a prefix; empty when there is none.
  std::string_view operator[](std::string_view name) const;

 private:
  const unsigned char** attributes_;
  int count_;
};

// Names are without prefix: a document's own namespaces differ from version to version, its names don't.
class XmlHandler {
 public:
  virtual ~XmlHandler() = default;
  virtual void start(std::string_view name, const XmlAttributes& attributes) = 0;
  virtual void end(std::string_view name) = 0;
  virtual void characters(std::string_view characters) = 0;

  // Whether the rest is of no use.
  virtual bool isDone() const { return false; }
};

// Reads the archive's current entry. Throws a DocumentError for what isn't well-formed, and what the handler
// throws.
void parseXml(ZipArchive& archive, XmlHandler& handler);

}  // namespace standin::documents
