// exiftool, as a person uses it: the second opinion on what is in a file.
#pragma once

#include <set>
#include <string>
#include <vector>

// Writes tags: {"-XMP:Title=a title", ...}. Throws what exiftool complains of.
void writeTags(const std::string& path, const std::vector<std::string>& assignments);

// What exiftool prints for each tag, without a name before it: "-" for one that the file has not.
std::vector<std::string> printedTags(const std::string& path, const std::vector<std::string>& tags);

// The names of all tags that there are.
std::set<std::string> knownTags();
