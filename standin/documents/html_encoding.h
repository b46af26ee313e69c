// The encoding of a page.
#pragma once

#include <string>
#include <string_view>

namespace standin::documents {

// A name that ICU knows.
std::string encodingOfHtml(std::string_view page);

}  // namespace standin::documents
