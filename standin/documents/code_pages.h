// Bytes of code pages as UTF-8.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

struct UConverter;

namespace standin::documents {

class CodePages {
 public:
  // By the numbers that Windows has for code pages; what it has no number for counts as 1252. Bytes that are
  // no characters become U+FFFD.
  std::string toUtf8(std::string_view bytes, int codePage);

 private:
  struct Close {
    void operator()(UConverter* converter) const;
  };
  using Converter = std::unique_ptr<UConverter, Close>;

  static Converter open(int codePage);
  UConverter& converterOf(int codePage);

  std::map<int, Converter> converters_;  // those that were needed
};

}  // namespace standin::documents
