// The text of a page of HTML or XHTML.
#pragma once

#include <string_view>

#include "standin/documents/limits.h"
#include "standin/documents/text.h"

namespace standin::documents {

// Unclosed and unknown tags matter as little as to a browser. The page's own word for its encoding counts,
// then that of its bytes: UTF-8 where they are that, else windows-1252. Throws a DocumentError when the time
// is over.
void addHtml(std::string_view page, const Deadline& deadline, Text& text);

}  // namespace standin::documents
