#include "shotlight/color.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "shotlight/errors.h"
#include "standin/system/long_paths.h"

namespace shotlight {
namespace {

// What ls has where LS_COLORS says nothing.
const std::pair<const char*, const char*> kDefaults[] = {
    {"di", "01;34"}, {"ln", "01;36"}, {"pi", "33"},    {"so", "01;35"}, {"bd", "01;33"}, {"cd", "01;33"},
    {"ex", "01;32"}, {"su", "37;41"}, {"sg", "30;43"}, {"st", "37;44"}, {"ow", "34;42"}, {"tw", "30;42"},
};

bool isSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value && *value;
}

// Numbers and semicolons: a terminal can be told nothing else by them.
bool isColor(std::string_view text) {
  return text.find_first_not_of("0123456789;") == std::string_view::npos;
}

using FileInfo = struct statx;

// `flags` as of open().
std::optional<FileInfo> infoOf(const std::string& path, int flags) {
  FileInfo info;
  const standin::OpenFile file(standin::openLongPath(path, O_PATH | flags));
  if (!file || statx(file.get(), "", AT_EMPTY_PATH, STATX_TYPE | STATX_MODE | STATX_NLINK, &info) != 0)
    return {};
  return info;
}

bool endsWith(std::string_view text, std::string_view suffix, bool ignoresCase) {
  if (text.size() < suffix.size()) return false;
  const std::string_view end = text.substr(text.size() - suffix.size());
  return ignoresCase ? strncasecmp(end.data(), suffix.data(), suffix.size()) == 0 : end == suffix;
}

}  // namespace

ColorUse colorUseNamed(const std::string& name) {
  if (name == "auto") return ColorUse::automatic;
  if (name == "always") return ColorUse::always;
  if (name == "never") return ColorUse::never;
  throw UsageError("--color '" + name + "': auto, always or never is needed");
}

bool usesColor(ColorUse use) {
  if (use != ColorUse::automatic) return use == ColorUse::always;
  const char* const terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) && terminal && *terminal && std::string_view(terminal) != "dumb" &&
         !isSet("NO_COLOR");
}

FileColors::FileColors(std::string_view definitions) : byKind_(std::begin(kDefaults), std::end(kDefaults)) {
  while (!definitions.empty()) {
    const std::string_view definition = definitions.substr(0, definitions.find(':'));
    definitions.remove_prefix(std::min(definition.size() + 1, definitions.size()));
    const size_t equals = definition.rfind('=');
    if (equals == std::string_view::npos) continue;
    const std::string_view what = definition.substr(0, equals), color = definition.substr(equals + 1);
    if (what == "ln" && color == "target") {
      byKind_["ln"] = color;
    } else if (isColor(color)) {
      if (what.starts_with('*')) {
        bySuffix_.emplace_back(what.substr(1), color);
      } else {
        byKind_[std::string(what)] = color;
      }
    }
  }
}

FileColors FileColors::ofEnvironment() {
  const char* const definitions = std::getenv("LS_COLORS");
  return FileColors(definitions ? definitions : "");
}

const std::string& FileColors::named(const char* what) const {
  static const std::string kNone;
  const auto found = byKind_.find(what);
  return found == byKind_.end() ? kNone : found->second;
}

// ls takes no colour, and the terminal's usual one, for a kind that isn't to be told apart.
bool FileColors::has(const char* what) const {
  const std::string& color = named(what);
  return color.find_first_not_of('0') != std::string::npos;
}

std::string FileColors::byName(std::string_view path) const {
  for (const bool ignoresCase : {false, true}) {
    const auto found = std::find_if(bySuffix_.rbegin(), bySuffix_.rend(), [&](const auto& suffix) {
      return endsWith(path, suffix.first, ignoresCase);
    });
    if (found != bySuffix_.rend()) return found->second;
  }
  return named("fi");
}

std::string FileColors::colorOf(const std::string& path) const {
  std::optional<FileInfo> info = infoOf(path, O_NOFOLLOW);
  if (!info) return named("mi");
  if (S_ISLNK(info->stx_mode)) {
    const std::optional<FileInfo> target = infoOf(path, 0);
    const bool asTarget = named("ln") == "target";
    if (!target && (has("or") || asTarget)) return named("or");
    if (!asTarget) return named("ln");
    info = target;
  }
  const unsigned mode = info->stx_mode;
  const bool isFile = S_ISREG(mode), isFolder = S_ISDIR(mode);
  const bool isSticky = (mode & S_ISVTX) != 0, othersWrite = (mode & S_IWOTH) != 0;
  const struct {
    bool applies;
    const char* kind;
  } kinds[] = {
      {isFolder && isSticky && othersWrite, "tw"},
      {isFolder && othersWrite, "ow"},
      {isFolder && isSticky, "st"},
      {isFolder, "di"},
      {S_ISFIFO(mode), "pi"},
      {S_ISSOCK(mode), "so"},
      {S_ISBLK(mode), "bd"},
      {S_ISCHR(mode), "cd"},
      {isFile && (mode & S_ISUID) != 0, "su"},
      {isFile && (mode & S_ISGID) != 0, "sg"},
      {isFile && has("ca") && getxattr(path.c_str(), "security.capability", nullptr, 0) > 0, "ca"},
      {isFile && (mode & 0111) != 0, "ex"},
      {isFile && info->stx_nlink > 1, "mh"},
  };
  for (const auto& [applies, kind] : kinds) {
    if (applies && has(kind)) return named(kind);
  }
  return isFile ? byName(path) : std::string();
}

std::string painted(const std::string& text, const std::string& color) {
  return color.empty() ? text : "\033[" + color + 'm' + text + "\033[0m";
}

}  // namespace shotlight
