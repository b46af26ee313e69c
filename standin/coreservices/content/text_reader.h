// The program document-text, which reads the text of documents, as a reader.
#pragma once

#include <cstddef>
#include <string>

#include "standin/coreservices/readers/reader_pool.h"

namespace standin::metadata {

ReaderPool::Options textReader(size_t processes);

}  // namespace standin::metadata
