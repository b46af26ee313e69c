// The program document-text, which reads the text of documents, as a reader.
#pragma once

#include <cstddef>
#include <string_view>

#include "standin/coreservices/readers/reader_pool.h"

namespace standin::metadata {

ReaderPool::Options textReader(size_t processes);

// What it is told that a document is, before its path.
inline constexpr std::string_view kTextFormats[] = {"pdf", "opendocument", "openxml", "epub", "html", "rtf"};

}  // namespace standin::metadata
