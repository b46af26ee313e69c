// docs/reference.md, made of what a plug-in registered and of one file of sentences.
//
// The sentences stand in blocks. A block begins with a line in brackets: "[page]" for the beginning of the
// page, "[class NAME]" for a class and then a declaration for each of its members, just as it is registered
// (constants, too), "[global]" for the methods without a class. Then come the sentences, as Markdown, and of
// a member fields, each at the start of a line, whose texts may go on in indented lines:
//
//   NAME:      what the parameter of this name is
//   result:    what a method answers or a property holds
//   nil:       what it is where there is nothing to answer
//   raises:    exceptions
//   since:     the macOS versions that have it
//   example:   a program, in the indented lines below, and
//   prints:    what it prints
//
// A member has those fields that its declaration asks for, and no others. The attribute keys, which have a
// page of their own, are left out.
#pragma once

#include <stdexcept>
#include <string>

namespace docs {

// A member without a text, a text without a member, a field too many or too few; the text lists them all.
struct ReferenceError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The page. Asks the running host what is registered there. Throws ReferenceError.
std::string referencePage(const std::string& sentences);

// A file's bytes. Throws ReferenceError when it can't be read.
std::string readFile(const std::string& file);

}  // namespace docs
