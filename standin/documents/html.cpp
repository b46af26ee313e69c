#include <string>

#include "standin/documents/file.h"
#include "standin/documents/formats.h"
#include "standin/documents/html_text.h"

namespace standin::documents {

void readHtml(int file, const Deadline& deadline, Text& text) {
  addHtml(readWhole(file, kLargestPage), deadline, text);
}

}  // namespace standin::documents
