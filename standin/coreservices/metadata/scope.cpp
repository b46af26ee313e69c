#include "standin/coreservices/metadata/scope.h"

#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <utility>

#include "standin/coreservices/disk/paths.h"
#include "standin/coreservices/metadata/checks.h"
#include "standin/coreservices/metadata/control.h"
#include "standin/coreservices/services.h"
#include "standin/system/file_urls.h"
#include "standin/system/utf8.h"

namespace standin::metadata {
namespace {

using Place = ScopeElement::Place;

struct IndexedFolders {
  std::vector<std::string> folders = {"/"};
  std::vector<std::string> excluded = {"/proc", "/sys", "/dev"};
};

IndexedFolders& indexedFolders() {
  static IndexedFolders set;
  return set;
}

bool& scopesAlone() {
  static bool alone = false;
  return alone;
}

WalkFilter& setFilter() {
  static WalkFilter filter;
  return filter;
}

SearchScope& notedScope() {
  static SearchScope noted;
  return noted;
}

ScopeElement elementOf(CFStringRef string) {
  const struct {
    CFStringRef key;
    Place place;
  } keys[] = {{kMDQueryScopeHome, Place::Home},
              {kMDQueryScopeComputer, Place::Indexed},
              {kMDQueryScopeComputerIndexed, Place::Indexed},
              {kMDQueryScopeAllIndexed, Place::Indexed},
              {kMDQueryScopeNetwork, Place::Network},
              {kMDQueryScopeNetworkIndexed, Place::Network}};
  for (const auto& [key, place] : keys) {
    if (CFEqual(key, string)) return {place, {}};
  }
  return {Place::Folder, utf8Of(string).value_or("")};
}

std::string homeFolder() {
  if (const char* const home = ::getenv("HOME"); home && *home) return home;
  const passwd* const user = ::getpwuid(::getuid());
  return user ? user->pw_dir : "";
}

std::vector<std::string> foldersOf(const Scope& scope) {
  const std::vector<std::string>& indexed = indexedFolders().folders;
  std::vector<std::string> folders;
  for (const ScopeElement& element : scope) {
    switch (element.place) {
      case Place::Folder:
        folders.push_back(element.path);
        break;
      case Place::Home:
        folders.push_back(homeFolder());
        break;
      case Place::Indexed:
        folders.insert(folders.end(), indexed.begin(), indexed.end());
        break;
      case Place::Network:
        break;
    }
  }
  return folders;
}

// Of folders that lie in one another, the inner one.
std::vector<std::string> inBoth(const std::vector<std::string>& left, const std::vector<std::string>& right) {
  std::vector<std::string> both;
  for (const std::string& l : left) {
    for (const std::string& r : right) {
      const std::string first = intendedPath(l);
      const std::string second = intendedPath(r);
      if (liesIn(first, second)) {
        both.push_back(first);
      } else if (liesIn(second, first)) {
        both.push_back(second);
      }
    }
  }
  return both;
}

}  // namespace

Scope scopeOf(const char* call, CFArrayRef array) {
  checkType(call, array, CFArrayGetTypeID(), "scope");
  Scope scope;
  for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
    const CFTypeRef element = CFArrayGetValueAtIndex(array, i);
    if (element && CFGetTypeID(element) == CFURLGetTypeID()) {
      scope.push_back({Place::Folder, pathOfURL(call, static_cast<CFURLRef>(element)).value_or("")});
    } else {
      checkString(call, element);
      scope.push_back(elementOf(static_cast<CFStringRef>(element)));
    }
  }
  return scope;
}

void noteScope(CFArrayRef array, OptionBits options) {
  SearchScope& noted = notedScope();
  noted = {noted.set + 1, {}, {}, options};
  for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
    const CFTypeRef place = CFArrayGetValueAtIndex(array, i);
    const bool isURL = CFGetTypeID(place) == CFURLGetTypeID();
    noted.places.push_back(
        utf8Of(isURL ? CFURLGetString(static_cast<CFURLRef>(place)) : static_cast<CFStringRef>(place))
            .value_or(""));
    noted.urls.push_back(isURL);
  }
}

std::vector<std::string> foldersOf(const std::optional<Scope>& scope, const std::vector<Scope>& around) {
  std::vector<std::string> folders = scope ? foldersOf(*scope) : indexedFolders().folders;
  for (const Scope& outer : around) folders = inBoth(folders, foldersOf(outer));
  return folders;
}

const std::vector<std::string>& excludedFolders() {
  return indexedFolders().excluded;
}

bool looksAtScopesAlone() {
  return scopesAlone();
}

const WalkFilter& walkFilter() {
  return setFilter();
}

}  // namespace standin::metadata

void standin::setLooksAtScopesAlone(bool alone) {
  metadata::scopesAlone() = alone;
}

void standin::setIndexedFolders(std::vector<std::string> folders, std::vector<std::string> excluded) {
  metadata::indexedFolders() = {std::move(folders), std::move(excluded)};
}

void standin::setWalkLimits(const WalkLimits& limits) {
  metadata::setFilter() = metadata::WalkFilter(limits);
}

standin::SearchScope standin::takeSearchScope() {
  return std::exchange(metadata::notedScope(), {});
}
