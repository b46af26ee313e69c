// The contents of small but real media files and documents, for tests to put tags into.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace sample {

std::string jpeg();  // 32 by 16 pixels, color
std::string png();   // 3 by 2 pixels, color with transparency, 144 dots per inch
std::string wave();  // a second of silence, 8000 Hz, one channel of 8 bits
std::string avi();   // 50 pictures of 64 by 48 pixels, 25 in a second
// An empty one of 5 seconds; the date of its making in seconds since 1904: 2011-03-05 12:00 GMT.
std::string mpeg4Audio(uint32_t made = 3382171200);
std::string pdf();  // a page, with a title, an author, keywords and dates

// A word processor's document with title T, subject S, author Ann, keywords a, b and c, and 3 pages.
std::string docx();

// A text of OpenDocument and a book, each with these keywords, an element each; the book's authors are Ann
// and Bob.
std::string odt(const std::vector<std::string>& keywords);
std::string epub(const std::vector<std::string>& keywords);

// Sound of 128 kbit/s after ID3 tags of version 2.4: {"TIT2", "a title"} and so on.
std::string mp3(const std::vector<std::pair<std::string, std::string>>& frames);

}  // namespace sample
