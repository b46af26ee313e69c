// Attribute values, as host code gets them, made into text.
#pragma once

#include <string>

#include "standin/host/host.h"

namespace shotlight {

enum class Form { nothing, boolean, number, text, bytes, date, list, dictionary, other };

// A string of unknown encoding counts as bytes, a folder item as the text of its path.
Form formOf(const standin::host::Value& value);

// One value that is no list and no dictionary: true; 1200; 0.008 (the shortest digits that give the same
// number back); a text in UTF-8, a file's name as its bytes; bytes as hexadecimal digits; a date as
// 2011-03-05T06:42:10Z; "" for nothing.
std::string plainText(const standin::host::Value& value);

// Any value as one text: the elements of a list are joined by ", ", a dictionary is {a = 1, b = 2}. An
// element of a list or a dictionary stands in double quotes, with those in it doubled, where it is empty or
// has a comma, a quote or a blank at its ends, so that it is known where it begins and ends; in a dictionary,
// and in lists within others, which stand in parentheses, also where it has one of (){}=.
std::string joinedText(const standin::host::Value& value);

}  // namespace shotlight
