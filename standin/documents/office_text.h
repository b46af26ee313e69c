// The text among the elements of an office format, by a table of their names.
#pragma once

#include <span>
#include <string_view>

#include "standin/documents/text.h"
#include "standin/documents/xml.h"

namespace standin::documents {

enum class Part {
  Text,   // the characters inside are text
  Break,  // what is before and after is never one word
  Block,  // both
  Skip    // nothing inside counts
};

struct ElementRow {
  std::string_view name;
  Part part;
};

class OfficeText : public XmlHandler {
 public:
  // Both are borrowed.
  OfficeText(std::span<const ElementRow> elements, Text& text) : elements_(elements), text_(text) {}

  void start(std::string_view name, const XmlAttributes& attributes) override;
  void end(std::string_view name) override;
  void characters(std::string_view characters) override;
  bool isDone() const override { return text_.isFull(); }

 private:
  const ElementRow* find(std::string_view name) const;

  std::span<const ElementRow> elements_;
  Text& text_;
  int depthInText_ = 0;  // elements whose characters count, one in the other
  int depthInSkip_ = 0;  // elements below the outermost that is skipped, itself included
};

}  // namespace standin::documents
