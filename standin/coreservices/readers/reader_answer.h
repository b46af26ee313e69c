// What readers say, apart from the processes that say it: see reader_pool.h.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace standin::metadata {

struct ReaderAnswer {
  enum Kind {
    Read,
    Part,        // of what is in it
    Refused,     // and it would be again, as long as the file stays as it is
    Unreadable,  // perhaps for the moment only
  };
  Kind kind;
  std::string bytes;  // what was read, or why nothing was
};

// Reads the answer at the beginning of what was received, and tells how many bytes it has there. Of an answer
// that isn't whole yet there is more to come; nonsense stays nonsense, whatever comes.
enum class Parsed { Answer, More, Nonsense };
Parsed parseAnswer(std::string_view received, ReaderAnswer& answer, size_t& length);

}  // namespace standin::metadata
