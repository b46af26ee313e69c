#include <set>
#include <string>
#include <string_view>

#include "standin/documents/formats.h"
#include "standin/documents/html_text.h"
#include "standin/documents/xml.h"
#include "standin/documents/zip.h"

namespace standin::documents {
namespace {

using Names = std::set<std::string, std::less<>>;

int hexadecimal(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// "a%20b" is "a b".
std::string decoded(std::string_view reference) {
  std::string name;
  for (size_t i = 0; i < reference.size(); ++i) {
    const int high = i + 2 < reference.size() ? hexadecimal(reference[i + 1]) : -1;
    const int low = high >= 0 ? hexadecimal(reference[i + 2]) : -1;
    if (reference[i] == '%' && low >= 0) {
      name += static_cast<char>(high * 16 + low);
      i += 2;
    } else {
      name += reference[i];
    }
  }
  return name;
}

// The entry that a reference leads to from an entry of the folder, which is empty or ends with '/'.
std::string resolved(std::string folder, std::string_view reference) {
  while (reference.starts_with("../")) {
    reference.remove_prefix(3);
    if (folder.empty()) continue;
    folder.pop_back();
    folder.erase(folder.rfind('/') + 1);  // all of it where none is left
  }
  return folder + decoded(reference.substr(0, reference.find('#')));
}

// META-INF/container.xml, which names the packages, and META-INF/encryption.xml, which names what is
// encrypted: often no more than fonts.
class ContainerReader : public XmlHandler {
 public:
  void start(std::string_view name, const XmlAttributes& attributes) override {
    if (name == "rootfile") packages.emplace(attributes["full-path"]);
    if (name == "CipherReference") encrypted.insert(decoded(attributes["URI"]));
  }
  void end(std::string_view) override {}
  void characters(std::string_view) override {}

  Names packages, encrypted;
};

class PackageReader : public XmlHandler {
 public:
  PackageReader(std::string_view package, Names& pages)
      : folder_(package.substr(0, package.rfind('/') + 1)), pages_(pages) {}

  void start(std::string_view name, const XmlAttributes& attributes) override {
    if (name != "item") return;
    const std::string_view type = attributes["media-type"];
    const bool isPage =
        type == "application/xhtml+xml" || type == "text/html" || type == "text/x-oeb1-document";
    if (isPage) pages_.insert(resolved(folder_, attributes["href"]));
  }
  void end(std::string_view) override {}
  void characters(std::string_view) override {}

 private:
  const std::string folder_;
  Names& pages_;
};

}  // namespace

void readEpub(int file, const Deadline& deadline, Text& text) {
  ZipArchive archive(file, deadline, "EPUB book");
  ContainerReader container;
  while (archive.next()) {
    const std::string_view name = archive.name();
    if (name == "META-INF/container.xml" || name == "META-INF/encryption.xml") parseXml(archive, container);
  }
  if (container.packages.empty()) throw DocumentError("is no EPUB book: its container.xml names no package");

  Names pages;
  archive.rewind();
  while (archive.next()) {
    if (!container.packages.contains(archive.name())) continue;
    PackageReader package(archive.name(), pages);
    parseXml(archive, package);
  }

  bool isEncrypted = false;
  archive.rewind();
  while (!text.isFull() && archive.next()) {
    if (!pages.contains(archive.name())) continue;
    if (container.encrypted.contains(archive.name())) {
      isEncrypted = true;
    } else {
      addHtml(archive.readWhole(), deadline, text);
    }
  }
  if (isEncrypted && text.utf8().empty()) throw DocumentError("is encrypted");
}

}  // namespace standin::documents
