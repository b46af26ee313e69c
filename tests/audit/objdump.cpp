#include "tests/audit/objdump.h"

#include <sys/wait.h>

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace audit {
namespace {

typedef std::vector<std::string> Words;

[[noreturn]] void fail(const std::string& file, const std::string& what) {
  throw std::runtime_error(file + ": " + what);
}

constexpr const char* kSeveral = "holds several files; take out the one for i386 with lipo -thin i386";

// Of a file that holds one for each processor: FAT_MAGIC and FAT_MAGIC_64.
bool isUniversal(std::istream& stream) {
  char magic[4] = {};
  stream.read(magic, sizeof magic);
  const std::string_view text(magic, sizeof magic);
  return text == "\xCA\xFE\xBA\xBE" || text == "\xCA\xFE\xBA\xBF";
}

// llvm-objdump also ends well where it read nothing, and reads one of several files.
void checkReadable(const std::string& file) {
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (!std::filesystem::exists(status)) fail(file, "there is no such file; name a dylib");
  if (!std::filesystem::is_regular_file(status)) fail(file, "is no file; name a dylib");
  std::ifstream stream(file, std::ios::binary);
  if (!stream) fail(file, "can't be read; allow it, or name another file");
  if (isUniversal(stream)) fail(file, kSeveral);
}

// One word of the shell, whatever is in it; never an option.
std::string quoted(const std::string& file) {
  std::string word = file.starts_with('-') ? "'./" : "'";
  for (const char c : file) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return word + '\'';
}

// All that llvm-objdump tells of the file, a line after the other.
std::vector<std::string> dump(const std::string& file) {
  checkReadable(file);
  const std::string command =
      LLVM_OBJDUMP " --macho --private-headers --exports-trie --rebase --bind --weak-bind --lazy-bind " +
      quoted(file) + " 2>&1";
  FILE* const pipe = popen(command.c_str(), "r");
  if (!pipe) fail(file, "llvm-objdump can't be started");
  std::string output;
  char buffer[4096];
  while (const size_t count = fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, count);
  const int status = pclose(pipe);
  while (output.ends_with('\n')) output.pop_back();
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) fail(file, "llvm-objdump can't read it: " + output);
  std::vector<std::string> lines;
  std::istringstream stream(output);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

Words wordsIn(const std::string& line) {
  std::istringstream stream(line);
  Words words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

uint64_t numberIn(std::string_view word) {
  const int base = word.starts_with("0x") ? 16 : 10;
  if (base == 16) word.remove_prefix(2);
  uint64_t number = 0;
  const auto result = std::from_chars(word.data(), word.data() + word.size(), number, base);
  if (result.ec != std::errc() || result.ptr != word.data() + word.size())
    throw std::runtime_error("llvm-objdump says '" + std::string(word) + "' for a number");
  return number;
}

// Takes the lines, one after the other: the headers, and then tables, each with its title.
class Reader {
 public:
  void read(const std::string& line) {
    if (line == "Exports trie:" || line.ends_with(" table:")) {
      table_ = line.substr(0, line.size() - 1);
      return;
    }
    const Words words = wordsIn(line);
    if (table_.empty()) return readHeader(words);
    if (table_ == "Exports trie") return readExport(words);
    readFixup(words);
  }

  // How many headers there were: several in an archive, none in what is no Mach-O file.
  size_t headers() const { return headers_; }
  const Image& image() const { return image_; }

 private:
  void readHeader(const Words& line) {
    if (line.size() < 2) return;
    const std::string &key = line[0], &value = line[1];
    if (key.starts_with("MH_MAGIC") && line.size() > 4) {
      ++headers_;
      image_.kind = value + ' ' + line[4];
    }
    if (key == "cmd") begin(value);
    if (key == "sectname") beginSection(value);
    if (isSegment() && !image_.segments.empty()) readSegment(key, value);
    if (command_ == "LC_VERSION_MIN_MACOSX" && key == "version") image_.minimumSystem = value;
    if (command_ == "LC_UUID" && key == "uuid") image_.uuid = value;
    if (key == "nextrel" || key == "nlocrel") image_.relocations[key] = numberIn(value);
    readTable(key, value);
    if (command_.ends_with("_DYLIB")) readLibrary(line);
  }

  bool isSegment() const { return command_ == "LC_SEGMENT" || command_ == "LC_SEGMENT_64"; }

  void begin(const std::string& command) {
    command_ = command;
    inSection_ = false;
    image_.commands.push_back(command);
    if (isSegment()) image_.segments.emplace_back();
    if (command.ends_with("_DYLIB") && command != "LC_ID_DYLIB")
      image_.libraries.push_back({command, "", "", ""});
  }

  void beginSection(const std::string& name) {
    if (image_.segments.empty()) return;
    inSection_ = true;
    image_.segments.back().sections.push_back({.name = name, .type = ""});
  }

  void readSegment(const std::string& key, const std::string& value) {
    Segment& segment = image_.segments.back();
    if (inSection_) return readSection(segment.sections.back(), key, value);
    if (key == "segname") segment.name = value;
    if (key == "vmaddr") segment.address = numberIn(value);
    if (key == "vmsize") segment.size = numberIn(value);
    if (key == "fileoff") segment.fileOffset = numberIn(value);
    if (key == "filesize") segment.fileSize = numberIn(value);
    if (key == "initprot") segment.protection = value;
  }

  static void readSection(Section& section, const std::string& key, const std::string& value) {
    if (key == "addr") section.address = numberIn(value);
    if (key == "size") section.size = numberIn(value);
    if (key == "offset") section.offset = numberIn(value);
    // "2^4"; of a damaged file any number.
    if (key == "align" && value.starts_with("2^"))
      section.alignment = static_cast<unsigned>(numberIn(value.substr(2)));
    if (key == "type") section.type = value;
  }

  // What a table of __LINKEDIT counts, in bytes.
  void readTable(const std::string& key, const std::string& value) {
    static const std::map<std::string, Table> tables = {{"rebase_size", {"rebases", 1}},
                                                        {"bind_size", {"binds", 1}},
                                                        {"weak_bind_size", {"weak binds", 1}},
                                                        {"lazy_bind_size", {"lazy binds", 1}},
                                                        {"export_size", {"exports", 1}},
                                                        {"nsyms", {"symbols", 12}},
                                                        {"nindirectsyms", {"indirect symbols", 4}},
                                                        {"strsize", {"strings", 1}}};
    const auto table = tables.find(key);
    if (table == tables.end() || value == "0") return;
    image_.tables.push_back({table->second.name, table->second.size * numberIn(value)});
  }

  void readLibrary(const Words& line) {
    const std::string &key = line[0], &value = line[1];
    if (command_ == "LC_ID_DYLIB") {
      if (key == "name") image_.installName = value;
      if (key == "current" && line.size() > 2) image_.version = line[2];
      return;
    }
    Library& library = image_.libraries.back();
    if (key == "name") library.name = value;
    if (key == "current" && line.size() > 2) library.current = line[2];
    if (key == "compatibility" && line.size() > 2) library.compatibility = line[2];
  }

  void readExport(const Words& line) {
    if (line.size() > 1 && line[0].starts_with("0x")) image_.exports.insert(line[1]);
  }

  // A row of the bind table: segment, section, address, "pointer", addend, library, symbol, "(weak_import)"
  // or nothing. That of lazy binds has neither type nor addend; the others have no library.
  void readFixup(const Words& row) {
    if (row.size() < 3 || !row[0].starts_with("__")) return;
    image_.fixups.push_back({table_, row[0], row[2]});
    const size_t library = table_ == "Bind table" ? 5 : 3;
    const bool isImport = table_ == "Bind table" || table_ == "Lazy bind table";
    if (!isImport || row.size() < library + 2) return;
    const bool weak = row.size() > library + 2 && row[library + 2] == "(weak_import)";
    image_.imports.insert({row[library], row[library + 1], weak});
  }

  Image image_;
  std::string command_;
  std::string table_;  // none while the headers are read
  bool inSection_ = false;
  size_t headers_ = 0;
};

}  // namespace

// By its name or by its type: dyld goes by the type.
bool Section::hasInitialisers() const {
  static const std::set<std::string> kNames = {"__mod_init_func", "__mod_term_func", "__StaticInit"};
  static const std::set<std::string> kTypes = {"S_MOD_INIT_FUNC_POINTERS", "S_MOD_TERM_FUNC_POINTERS"};
  return kNames.contains(name) || kTypes.contains(type);
}

Image imageOf(const std::string& file) {
  Reader reader;
  for (const std::string& line : dump(file)) reader.read(line);
  if (reader.headers() == 0) fail(file, "is no Mach-O file; name a dylib");
  if (reader.headers() > 1) fail(file, kSeveral);
  return reader.image();
}

std::string baseName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

std::string shortName(const std::string& installName) {
  const std::string base = baseName(installName);
  return base.substr(0, base.find('.'));
}

}  // namespace audit
