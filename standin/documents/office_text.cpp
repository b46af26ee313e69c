#include "standin/documents/office_text.h"

#include <algorithm>

namespace standin::documents {

const ElementRow* OfficeText::find(std::string_view name) const {
  const auto found = std::ranges::find(elements_, name, &ElementRow::name);
  return found == elements_.end() ? nullptr : &*found;
}

void OfficeText::start(std::string_view name, const XmlAttributes&) {
  const ElementRow* const element = find(name);
  if (depthInSkip_ > 0 || (element && element->part == Part::Skip)) {
    ++depthInSkip_;
    return;
  }
  if (!element) return;
  if (element->part != Part::Break) ++depthInText_;
  if (element->part != Part::Text) text_.addBlank();
}

void OfficeText::end(std::string_view name) {
  if (depthInSkip_ > 0) {
    --depthInSkip_;
    return;
  }
  const ElementRow* const element = find(name);
  if (!element) return;
  if (element->part != Part::Break) --depthInText_;
  if (element->part != Part::Text) text_.addBlank();
}

void OfficeText::characters(std::string_view characters) {
  if (depthInText_ > 0 && depthInSkip_ == 0) text_.add(characters);
}

}  // namespace standin::documents
