// The library exiftool, which reads the metadata of media and documents, as a reader: perl runs read_tags.pl.
#pragma once

#include <cstddef>
#include <string>

#include "standin/coreservices/readers/reader_pool.h"

namespace standin::metadata {

// `perl` and `exiftool` are looked up in PATH unless they have a slash.
ReaderPool::Options exiftoolReader(size_t processes, const std::string& perl = "perl",
                                   const std::string& exiftool = "exiftool");

}  // namespace standin::metadata
