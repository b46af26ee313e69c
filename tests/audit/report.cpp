#include "tests/audit/report.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <regex>
#include <sstream>

#include "standin/gate/shown_text.h"
#include "tests/audit/objdump.h"

namespace audit {
namespace {

constexpr size_t kWidth = 100;  // characters of a line

typedef std::vector<std::string> Words;

std::string hexadecimal(uint64_t number) {
  char text[20];
  std::snprintf(text, sizeof text, "0x%06llx", static_cast<unsigned long long>(number));
  return text;
}

// Without the underscore that the compiler puts before the names of C.
std::string nameOf(const std::string& symbol) {
  return symbol.starts_with('_') ? symbol.substr(1) : symbol;
}

// "511" of "511.0.0".
std::string brief(std::string version) {
  while (version.ends_with(".0")) version.resize(version.size() - 2);
  return version;
}

// The words, each but the last with a comma behind it.
Words listed(Words words) {
  for (size_t i = 0; i + 1 < words.size(); ++i) words[i] += ',';
  return words;
}

// Behind what tells of them.
Words after(const std::string& start, Words words) {
  words.insert(words.begin(), start);
  return words;
}

// The names in their order; those that share their beginning ("CFString", "kMDItem") as shells have it:
// "CFString{Compare, GetLength}".
Words gathered(const Words& names) {
  static const std::regex kBeginning("k?[A-Z]{2,}[a-z]+(?=[A-Z])");
  const auto beginningOf = [](const std::string& name) {
    std::smatch found;
    return std::regex_search(name, found, kBeginning, std::regex_constants::match_continuous) ? found.str()
                                                                                              : name;
  };
  Words result;
  for (size_t i = 0; i < names.size();) {
    const std::string beginning = beginningOf(names[i]);
    const size_t first = i;
    while (i < names.size() && beginningOf(names[i]) == beginning) ++i;
    for (size_t j = first; j < i; ++j) {
      if (i - first == 1) {
        result.push_back(names[j]);
      } else {
        result.push_back((j == first ? beginning + '{' : "") + names[j].substr(beginning.size()));
      }
    }
    if (i - first > 1) result.back() += '}';
  }
  return result;
}

class Page {
 public:
  void line(const std::string& text) { text_ << standin::shownText(text) << '\n'; }
  void blank() { text_ << '\n'; }

  // The words, as many in a line as fit; lines after the first begin two columns further to the right.
  void paragraph(size_t indentation, const Words& words) {
    std::string text(indentation, ' ');
    bool begins = true;
    for (const std::string& word : words) {
      if (!begins && text.size() + 1 + word.size() > kWidth) {
        line(text);
        text.assign(indentation + 2, ' ');
        begins = true;
      }
      text += (begins ? "" : " ") + word;
      begins = false;
    }
    line(text);
  }

  std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
};

class Report {
 public:
  Report(const std::string& dylib, const Lists& lists, const Words& findings)
      : dylib_(dylib), image_(imageOf(dylib)), introduced_(introducedIn(lists)), findings_(findings) {}

  std::string write() {
    writeKind();
    writeFindings();
    writeExports();
    writeCommands();
    writeSegments();
    writeLoading();
    writeImports();
    return page_.text();
  }

 private:
  void writeKind() {
    const auto known = [](const std::string& text) { return text.empty() ? std::string("unknown") : text; };
    page_.line(baseName(dylib_) + ": " + image_.kind + ' ' + known(image_.version) + ", for macOS " +
               known(image_.minimumSystem) + " and later, " +
               std::to_string(std::filesystem::file_size(dylib_)) + " bytes");
    page_.line("install name " + known(image_.installName) + ", UUID " + known(image_.uuid));
    page_.blank();
  }

  void writeFindings() {
    if (findings_.empty()) page_.line("Audit: all is as it should be");
    if (!findings_.empty())
      page_.line("Audit: " + std::to_string(findings_.size()) +
                 (findings_.size() == 1 ? " finding" : " findings"));
    for (const std::string& finding : findings_) page_.line("  " + finding);
  }

  void writeExports() {
    Words names;
    for (const std::string& symbol : image_.exports) names.push_back(nameOf(symbol));
    if (names.empty()) names.push_back("none");
    page_.paragraph(0, after("Exports:", listed(names)));
  }

  // One after the other, equal neighbours counted.
  void writeCommands() {
    Words counted;
    size_t times = 0;
    for (size_t i = 0; i < image_.commands.size(); ++i) {
      ++times;
      const std::string& command = image_.commands[i];
      if (i + 1 < image_.commands.size() && image_.commands[i + 1] == command) continue;
      counted.push_back(times > 1 ? std::to_string(times) + ' ' + command : command);
      times = 0;
    }
    page_.paragraph(0, after("Load commands:", listed(counted)));
    page_.blank();
  }

  void writeSegments() {
    page_.line("Segments, and sections with address, bytes and alignment");
    for (const Segment& segment : image_.segments) {
      page_.line("  " + segment.name + " at " + hexadecimal(segment.address) + ", " + segment.protection +
                 ", " + std::to_string(segment.fileSize) + " bytes of the file, " +
                 std::to_string(segment.size) + " of memory");
      Words sections;
      for (const Section& section : segment.sections) {
        sections.push_back(section.name + ' ' + hexadecimal(section.address) + ' ' +
                           std::to_string(section.size) + " 2^" + std::to_string(section.alignment));
      }
      if (!sections.empty()) page_.paragraph(4, listed(sections));
    }
    Words tables;
    for (const Table& table : image_.tables) tables.push_back(table.name + ' ' + std::to_string(table.size));
    if (!tables.empty()) page_.paragraph(4, after("tables, bytes:", listed(tables)));
    page_.blank();
  }

  void writeLoading() {
    Words initialisers;
    for (const Segment& segment : image_.segments) {
      for (const Section& section : segment.sections) {
        if (section.hasInitialisers()) initialisers.push_back(section.name);
      }
    }
    if (std::ranges::any_of(image_.commands,
                            [](const auto& name) { return name.starts_with("LC_ROUTINES"); }))
      initialisers.push_back("LC_ROUTINES");
    if (initialisers.empty())
      initialisers.push_back("none; nothing of it runs before its exports are called");
    page_.paragraph(0, after("Initialisers:", listed(initialisers)));

    std::map<std::string, size_t> changes;
    for (const Fixup& fixup : image_.fixups) ++changes[fixup.segment];
    Words counted;
    for (const auto& [segment, count] : changes) counted.push_back(std::to_string(count) + " in " + segment);
    if (counted.empty()) counted.push_back("none");
    page_.paragraph(0, after("Addresses that the loader writes:", listed(counted)));
    page_.blank();
  }

  void writeImports() {
    page_.line("Imports: " + std::to_string(image_.imports.size()) +
               ", grouped by the macOS version that introduced them. Weak ones may be absent.");
    page_.line("Each library is followed by its version and, in brackets, the oldest compatible one.");
    std::map<std::string, std::vector<Import>> byLibrary;
    for (const Import& import : image_.imports) byLibrary[import.library].push_back(import);
    for (const Library& library : image_.libraries) {
      const bool weak = library.command == "LC_LOAD_WEAK_DYLIB";
      page_.line(library.name + ' ' + brief(library.current) + " (" + brief(library.compatibility) + ')' +
                 (weak ? " weak" : ""));
      const std::string shortened = shortName(library.name);
      writeVersions(byLibrary[shortened]);
      byLibrary.erase(shortened);
    }
    for (const auto& [library, imports] : byLibrary) {
      page_.line(library);
      writeVersions(imports);
    }
  }

  struct Group {
    std::string version;
    bool weak;
    bool operator<(const Group& other) const {
      if (version == other.version) return weak < other.weak;
      return isLater(other.version, version) || (!isLater(version, other.version) && version < other.version);
    }
  };
  typedef std::map<Group, Words> Groups;

  // One paragraph: "10.4: a, b; 10.7 weak: c". The attribute keys have one for each version.
  void writeVersions(const std::vector<Import>& imports) {
    Groups keys, others;
    for (const Import& import : imports) {
      const auto row = introduced_.find(import.symbol);
      const std::string version = row == introduced_.end() ? "unknown" : row->second;
      Groups& groups = import.symbol.starts_with("_kMDItem") ? keys : others;
      groups[{version, import.weak}].push_back(nameOf(import.symbol));
    }
    writeGroups(others);
    for (const auto& group : keys) writeGroups({group});
  }

  void writeGroups(const Groups& groups) {
    Words words;
    for (const auto& [group, names] : groups) {
      if (!words.empty()) words.back() += ';';
      const Words inOrder = listed(gathered(names));
      words.push_back(group.version + (group.weak ? " weak:" : ":"));
      words.insert(words.end(), inOrder.begin(), inOrder.end());
    }
    if (!words.empty()) page_.paragraph(2, words);
  }

  std::string dylib_;
  Image image_;
  Versions introduced_;
  Words findings_;
  Page page_;
};

}  // namespace

std::string report(const std::string& dylib, const Lists& lists, const std::vector<std::string>& findings) {
  return Report(dylib, lists, findings).write();
}

}  // namespace audit
