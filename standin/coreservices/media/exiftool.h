// The library exiftool, which reads the metadata of media and documents, as a reader: perl runs read_tags.pl.
#pragma once

#include <cstddef>

#include "standin/coreservices/readers/reader_pool.h"

namespace standin::metadata {

ReaderPool::Options exiftoolReader(size_t processes);

}  // namespace standin::metadata
