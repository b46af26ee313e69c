#include "docs/generator/reference.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <vector>

#include "standin/host/host.h"
#include "standin/host/language/declarations.h"

namespace docs {

namespace {

namespace host = standin::host;

const char* const kSample = "example";
const char* const kOutput = "prints";

struct Block {
  std::string title;  // without the brackets
  std::string text;
  std::vector<std::pair<std::string, std::string>> fields;

  const std::string* field(const std::string& name) const {
    const auto found =
        std::find_if(fields.begin(), fields.end(), [&](const auto& field) { return field.first == name; });
    return found == fields.end() ? nullptr : &found->second;
  }
};

bool isWord(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) { return isalnum(c); });
}

// A line "word: text" begins a field, and so does "word:".
std::string fieldName(const std::string& line) {
  const size_t colon = line.find(':');
  if (colon == std::string::npos || (colon + 1 < line.size() && line[colon + 1] != ' ')) return {};
  const std::string name = line.substr(0, colon);
  return isWord(name) ? name : "";
}

std::string withoutBlankEnds(const std::string& text) {
  const size_t first = text.find_first_not_of('\n');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of('\n') + 1 - first);
}

// What follows the field's name: words on one line, and of a program its lines.
std::string continued(const std::string& text, const std::string& line, bool isProgram) {
  if (isProgram) return text + (text.empty() ? "" : "\n") + (line.size() > 4 ? line.substr(4) : "");
  const size_t begin = line.find_first_not_of(' ');
  if (begin == std::string::npos) return text;
  return text + (text.empty() ? "" : " ") + line.substr(begin);
}

void addLine(Block& block, const std::string& line) {
  const std::string name = fieldName(line);
  if (!name.empty()) {
    block.fields.emplace_back(name, continued("", line.substr(name.size() + 1), false));
  } else if (block.fields.empty()) {
    block.text += line + '\n';
  } else {
    auto& [last, text] = block.fields.back();
    text = continued(text, line, last == kSample || last == kOutput);
  }
}

std::vector<Block> blocksOf(const std::string& sentences) {
  std::vector<Block> blocks;
  std::istringstream stream(sentences);
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with('[') && line.ends_with(']')) {
      blocks.push_back({line.substr(1, line.size() - 2), {}, {}});
    } else if (!blocks.empty()) {
      addLine(blocks.back(), line);
    } else if (!line.empty()) {
      throw ReferenceError("before the first block: " + line);
    }
  }
  for (Block& block : blocks) {
    block.text = withoutBlankEnds(block.text);
    for (auto& [name, text] : block.fields) text = withoutBlankEnds(text);
  }
  return blocks;
}

bool isKey(const host::Member& member) {
  return member.kind == host::MemberKind::sharedMethod && member.name.starts_with("kMDItem");
}

bool isConstant(const host::Member& member) {
  return member.kind == host::MemberKind::constant;
}

// Of a property, too, whose text is like that of a method without parameters.
host::Declaration declarationOf(const host::Member& member) {
  return isConstant(member) ? host::Declaration{member.name, {}, {}} : host::parseMethod(member.text);
}

std::vector<std::string> wantedFields(const host::Member& member) {
  const host::Declaration declaration = declarationOf(member);
  std::vector<std::string> fields;
  for (const host::Parameter& parameter : declaration.parameters) fields.push_back(parameter.name);
  if (declaration.result.kind != host::TypeKind::none) fields.insert(fields.end(), {"result", "nil"});
  if (!isConstant(member) && member.kind != host::MemberKind::event) fields.emplace_back("raises");
  fields.insert(fields.end(), {"since", kSample, kOutput});
  return fields;
}

std::set<std::string> namesOfFields(const Block& block) {
  std::set<std::string> names;
  for (const auto& field : block.fields) names.insert(field.first);
  return names;
}

void checkFields(const std::string& where, const Block& block, const std::vector<std::string>& wanted,
                 std::string& mistakes) {
  std::set<std::string> rest = namesOfFields(block);
  if (rest.size() != block.fields.size()) mistakes += where + ": has a field twice\n";
  if (block.text.empty()) mistakes += where + ": has no sentence\n";
  for (const std::string& name : wanted) {
    const std::string* const text = block.field(name);
    if (!text || text->empty()) mistakes += where + ": has no " + name + '\n';
    rest.erase(name);
  }
  for (const std::string& name : rest) mistakes += where + ": has no use for " + name + '\n';
}

// As links to headings are made on the usual viewers of Markdown.
std::string anchorOf(const std::string& heading) {
  std::string anchor;
  for (const unsigned char c : heading) {
    if (isalnum(c) || c == '_' || c == '-') anchor += static_cast<char>(tolower(c));
    if (c == ' ') anchor += '-';
  }
  return anchor;
}

std::string parameterNames(const host::Declaration& declaration) {
  std::string names;
  for (const host::Parameter& parameter : declaration.parameters) {
    names += (names.empty() ? "" : ", ") + parameter.name;
  }
  return names;
}

struct Entry {
  const host::Member* member;
  const Block* block;
  std::string heading;
};

std::string row(const std::string& name, const std::string& text) {
  return "| " + name + " | " + text + " |\n";
}

std::string fence(const std::string& language, const std::string& text) {
  return "```" + language + '\n' + text + "\n```\n\n";
}

std::string entryText(const Entry& entry) {
  const host::Declaration declaration = declarationOf(*entry.member);
  std::string page = "### " + entry.heading + "\n\n`" + entry.member->text + "`\n\n" + entry.block->text +
                     "\n\n| | |\n|---|---|\n";
  for (const host::Parameter& parameter : declaration.parameters) {
    page += row('`' + parameter.name + '`', *entry.block->field(parameter.name));
  }
  for (const char* const name : {"result", "nil", "raises"}) {
    if (const std::string* const text = entry.block->field(name)) page += row(name, *text);
  }
  page += row("since", *entry.block->field("since")) + '\n';
  return page + fence("basic", *entry.block->field(kSample)) + fence("text", *entry.block->field(kOutput));
}

// One class, or the methods without one. Members and blocks stay where they are.
class Section {
 public:
  Section(std::string className, std::vector<host::Member> members)
      : className_(std::move(className)), members_(std::move(members)) {
    std::erase_if(members_, isKey);
  }

  // False when it has no such member.
  bool add(const Block& block, std::string& mistakes) {
    const auto member = std::find_if(members_.begin(), members_.end(),
                                     [&](const host::Member& each) { return each.text == block.title; });
    if (member == members_.end() || isDescribed(*member)) return false;
    checkFields(whereOf(*member), block, wantedFields(*member), mistakes);
    entries_.push_back({&*member, &block, headingOf(*member)});
    return true;
  }

  void tellMissing(std::string& mistakes) const {
    for (const host::Member& member : members_) {
      if (!isDescribed(member)) mistakes += whereOf(member) + ": has no block\n";
    }
  }

  std::string text(const std::string& title, const std::string& sentences) const {
    std::string page = "## " + title + "\n\n" + sentences + "\n\n";
    for (const Entry& entry : entries_) {
      const std::string name = entry.heading.substr(className_.empty() ? 0 : className_.size() + 1);
      page += "- [" + name + "](#" + anchorOf(entry.heading) + ")\n";
    }
    page += '\n';
    for (const Entry& entry : entries_) page += entryText(entry);
    return page;
  }

 private:
  std::string prefix() const { return className_.empty() ? "" : className_ + '.'; }
  std::string whereOf(const host::Member& member) const { return prefix() + member.text; }

  bool isDescribed(const host::Member& member) const {
    return std::any_of(entries_.begin(), entries_.end(),
                       [&](const Entry& entry) { return entry.member == &member; });
  }

  // One of several members of the same name is told by its parameters.
  std::string headingOf(const host::Member& member) const {
    const auto same = std::count_if(members_.begin(), members_.end(),
                                    [&](const host::Member& each) { return each.name == member.name; });
    const std::string heading = prefix() + member.name;
    return same == 1 ? heading : heading + '(' + parameterNames(declarationOf(member)) + ')';
  }

  std::string className_;
  std::vector<host::Member> members_;
  std::vector<Entry> entries_;
};

class Page {
 public:
  explicit Page(const std::vector<Block>& blocks) {
    for (const Block& block : blocks) add(block);
    finishSection();
    for (const std::string& name : host::registeredClasses()) {
      if (!described_.contains(name)) mistakes_ += name + ": has no block\n";
    }
    if (!described_.contains("")) mistakes_ += "the methods without a class: have no block\n";
    if (!mistakes_.empty()) throw ReferenceError(mistakes_);
  }

  const std::string& text() const { return text_; }

 private:
  void add(const Block& block) {
    if (block.title == "page") {
      text_ += block.text + "\n\n";
    } else if (block.title == "global") {
      begin("", "Global methods", block, host::globalMethods());
    } else if (block.title.starts_with("class ")) {
      beginClass(block.title.substr(6), block);
    } else if (!section_ || !section_->add(block, mistakes_)) {
      mistakes_ += '[' + block.title + "]: describes nothing that is registered, or again\n";
    }
  }

  void beginClass(const std::string& name, const Block& block) {
    const auto known = host::registeredClasses();
    if (std::find(known.begin(), known.end(), name) == known.end()) {
      mistakes_ += '[' + block.title + "]: there is no such class\n";
    } else {
      begin(name, name, block, host::members(name));
    }
  }

  void begin(const std::string& name, const std::string& title, const Block& block,
             const std::vector<host::Member>& members) {
    finishSection();
    checkFields(title, block, {}, mistakes_);
    if (!described_.insert(name).second) mistakes_ += title + ": has two blocks\n";
    section_.emplace(name, members);
    title_ = title;
    sentences_ = block.text;
  }

  void finishSection() {
    if (!section_) return;
    section_->tellMissing(mistakes_);
    if (mistakes_.empty()) text_ += section_->text(title_, sentences_);
    section_.reset();
  }

  std::string text_;
  std::string mistakes_;
  std::set<std::string> described_;  // the empty name: the methods without a class
  std::optional<Section> section_;
  std::string title_;
  std::string sentences_;
};

}  // namespace

std::string referencePage(const std::string& sentences) {
  const std::string page = Page(blocksOf(sentences)).text();
  return page.substr(0, page.find_last_not_of('\n') + 1) + '\n';
}

std::string readFile(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (!stream.is_open() || stream.bad()) throw ReferenceError(file + ": can't be read");
  return text;
}

}  // namespace docs
