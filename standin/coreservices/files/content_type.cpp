#include "standin/coreservices/files/content_type.h"

#include <algorithm>
#include <optional>
#include <string>
#include <unordered_map>

namespace standin::metadata {
namespace {

constexpr auto kEmbedded = Metadata::Embedded;

// identifier, conforms to, kind, extensions, MIME types, metadata
constexpr ContentType kTypes[] = {
    // Types that others conform to
    {"public.item", "", "", "", ""},
    {"public.content", "", "", "", ""},
    {"public.composite-content", "public.content", "", "", ""},
    {"public.data", "public.item", "Document", "", "application/octet-stream"},
    {"public.directory", "public.item", "", "", ""},
    {"public.executable", "public.item", "", "", ""},
    {"public.archive", "", "", "", ""},
    {"public.disk-image", "public.archive", "", "", ""},
    {"public.contact", "", "", "", ""},
    {"public.message", "", "", "", ""},
    {"public.email-message", "public.message", "", "", ""},
    {"public.calendar-event", "", "", "", ""},
    {"public.text", "public.data public.content", "", "", ""},
    {"public.delimited-values-text", "public.text", "", "", ""},
    {"public.source-code", "public.plain-text", "", "", ""},
    {"public.script", "public.source-code", "", "", ""},
    {"public.image", "public.data public.content", "", "", ""},
    {"public.camera-raw-image", "public.image", "", "", ""},
    {"public.audiovisual-content", "public.data public.content", "", "", ""},
    {"public.audio", "public.audiovisual-content", "", "", ""},
    {"public.movie", "public.audiovisual-content", "", "", ""},
    {"public.video", "public.movie", "", "", ""},
    {"public.font", "public.data public.content", "", "", ""},
    {"public.presentation", "public.composite-content", "", "", ""},
    {"public.spreadsheet", "public.content", "", "", ""},
    {"com.apple.package", "public.directory", "", "", ""},
    {"com.apple.bundle", "public.directory", "", "", ""},
    {"com.apple.application", "public.executable", "", "", ""},
    {"org.openxmlformats.openxml", "public.data", "", "", ""},
    {"org.oasis-open.opendocument", "public.data", "", "", ""},
    {"com.pkware.zip-archive", "public.data public.archive", "", "", ""},

    // What isn't a file of bytes
    {"public.folder", "public.directory", "Folder", "", "inode/directory"},
    {"public.symlink", "public.item", "Symbolic link", "", "inode/symlink"},
    {"com.apple.application-bundle", "com.apple.application com.apple.bundle com.apple.package",
     "Application", "app", ""},
    {"com.apple.framework", "com.apple.bundle", "Framework", "framework", ""},
    {"com.apple.generic-bundle", "com.apple.bundle", "Bundle", "bundle", ""},

    // Text
    {"public.plain-text", "public.text", "Plain text document", "txt text", "text/plain"},
    {"com.apple.log", "public.plain-text", "Log file", "log", "text/x-log"},
    {"net.daringfireball.markdown", "public.plain-text", "Markdown document", "md markdown", "text/markdown"},
    {"public.comma-separated-values-text", "public.delimited-values-text", "CSV document", "csv",
     "text/csv text/comma-separated-values"},
    {"public.tab-separated-values-text", "public.delimited-values-text", "TSV document", "tsv tab",
     "text/tab-separated-values"},
    {"public.rtf", "public.text", "Rich text document", "rtf", "text/rtf application/rtf", kEmbedded},
    {"public.html", "public.text", "HTML document", "html htm shtml", "text/html", kEmbedded},
    {"public.xhtml", "public.xml", "XHTML document", "xhtml xht", "application/xhtml+xml", kEmbedded},
    {"public.xml", "public.text", "XML document", "xml", "text/xml application/xml"},
    {"com.apple.property-list", "public.data", "Property list", "plist", "application/x-plist"},
    {"public.json", "public.text", "JSON document", "json", "application/json"},
    {"public.yaml", "public.text", "YAML document", "yaml yml", "application/yaml application/x-yaml"},
    {"public.css", "public.text", "CSS style sheet", "css", "text/css"},
    {"public.vcard", "public.text public.contact", "Address card", "vcf vcard",
     "text/vcard text/x-vcard text/directory"},
    {"com.apple.ical.ics", "public.text public.calendar-event", "Calendar", "ics ical", "text/calendar"},
    {"com.apple.mail.email", "public.data public.email-message", "Mail message", "eml", "message/rfc822"},

    // Source code
    {"public.c-source", "public.source-code", "C source code", "c", "text/x-c text/x-csrc"},
    {"public.c-header", "public.source-code", "C header", "h", "text/x-chdr"},
    {"public.c-plus-plus-source", "public.source-code", "C++ source code", "cpp cc cp cxx c++",
     "text/x-c++src"},
    {"public.c-plus-plus-header", "public.source-code", "C++ header", "hpp hh hxx h++", "text/x-c++hdr"},
    {"public.objective-c-source", "public.source-code", "Objective-C source code", "m", "text/x-objcsrc"},
    {"public.objective-c-plus-plus-source", "public.source-code", "Objective-C++ source code", "mm", ""},
    {"public.swift-source", "public.source-code", "Swift source code", "swift", "text/x-swift"},
    {"public.assembly-source", "public.source-code", "Assembly source code", "s asm", "text/x-asm"},
    {"com.sun.java-source", "public.source-code", "Java source code", "java jav", "text/x-java"},
    {"public.make-source", "public.script", "Makefile", "make mk", "text/x-makefile"},
    {"public.shell-script", "public.script", "Shell script", "sh command bash zsh csh",
     "application/x-sh application/x-shellscript text/x-shellscript"},
    {"public.perl-script", "public.shell-script", "Perl script", "pl pm", "text/x-perl application/x-perl"},
    {"public.python-script", "public.shell-script", "Python script", "py", "text/x-python"},
    {"public.ruby-script", "public.shell-script", "Ruby script", "rb rbw",
     "application/x-ruby text/x-ruby text/ruby"},
    {"public.php-script", "public.shell-script", "PHP script", "php php3 php4 phtml",
     "application/x-php text/php"},
    {"com.netscape.javascript-source", "public.source-code", "JavaScript source code", "js jscript",
     "text/javascript application/javascript"},

    // Images
    {"public.jpeg", "public.image", "JPEG image", "jpg jpeg jpe", "image/jpeg image/jpg", kEmbedded},
    {"public.jpeg-2000", "public.image", "JPEG 2000 image", "jp2 j2k jpf jpx", "image/jp2", kEmbedded},
    {"public.png", "public.image", "PNG image", "png", "image/png", kEmbedded},
    {"com.compuserve.gif", "public.image", "GIF image", "gif", "image/gif", kEmbedded},
    {"public.tiff", "public.image", "TIFF image", "tiff tif", "image/tiff", kEmbedded},
    {"com.microsoft.bmp", "public.image", "BMP image", "bmp dib", "image/bmp image/x-bmp", kEmbedded},
    {"com.microsoft.ico", "public.image", "Windows icon", "ico", "image/x-icon image/vnd.microsoft.icon",
     kEmbedded},
    {"com.apple.icns", "public.image", "Icon", "icns", "image/x-icns"},
    {"org.webmproject.webp", "public.image", "WebP image", "webp", "image/webp", kEmbedded},
    {"public.heic", "public.image", "HEIC image", "heic", "image/heic", kEmbedded},
    {"public.heif", "public.image", "HEIF image", "heif", "image/heif", kEmbedded},
    {"public.avif", "public.image", "AVIF image", "avif", "image/avif", kEmbedded},
    {"public.svg-image", "public.image public.xml", "SVG image", "svg", "image/svg+xml", kEmbedded},
    {"com.adobe.photoshop-image", "public.image", "Photoshop document", "psd",
     "image/vnd.adobe.photoshop image/x-psd", kEmbedded},
    {"com.adobe.raw-image", "public.camera-raw-image", "Digital negative", "dng", "image/x-adobe-dng",
     kEmbedded},
    {"com.canon.cr2-raw-image", "public.camera-raw-image", "Canon CR2 raw image", "cr2", "image/x-canon-cr2",
     kEmbedded},
    {"com.nikon.raw-image", "public.camera-raw-image", "Nikon raw image", "nef", "image/x-nikon-nef",
     kEmbedded},
    {"com.sony.arw-raw-image", "public.camera-raw-image", "Sony raw image", "arw", "image/x-sony-arw",
     kEmbedded},

    // Sound
    {"public.mp3", "public.audio", "MP3 audio", "mp3 mpga", "audio/mpeg audio/mp3", kEmbedded},
    {"public.mpeg-4-audio", "public.audio", "MPEG-4 audio", "mp4a", "audio/mp4", kEmbedded},
    {"com.apple.m4a-audio", "public.mpeg-4-audio", "Apple MPEG-4 audio", "m4a", "audio/x-m4a", kEmbedded},
    {"com.microsoft.waveform-audio", "public.audio", "Waveform audio", "wav wave",
     "audio/vnd.wave audio/wav audio/x-wav", kEmbedded},
    {"public.aiff-audio", "public.audio", "AIFF audio", "aiff aif", "audio/aiff audio/x-aiff", kEmbedded},
    {"org.xiph.flac", "public.audio", "FLAC audio", "flac", "audio/flac audio/x-flac", kEmbedded},
    {"org.xiph.ogg-audio", "public.audio", "Ogg audio", "ogg oga", "audio/ogg audio/x-vorbis+ogg", kEmbedded},
    {"com.microsoft.windows-media-wma", "public.audio", "Windows Media audio", "wma", "audio/x-ms-wma",
     kEmbedded},
    {"public.midi-audio", "public.audio", "MIDI sequence", "mid midi kar", "audio/midi audio/x-midi"},

    // Movies
    {"com.apple.quicktime-movie", "public.movie", "QuickTime movie", "mov qt", "video/quicktime", kEmbedded},
    {"public.mpeg-4", "public.movie", "MPEG-4 movie", "mp4 mpg4", "video/mp4", kEmbedded},
    {"com.apple.m4v-video", "public.movie", "Apple MPEG-4 movie", "m4v", "video/x-m4v", kEmbedded},
    {"public.mpeg", "public.movie", "MPEG movie", "mpg mpeg mpe", "video/mpeg", kEmbedded},
    {"public.avi", "public.movie", "AVI movie", "avi vfw", "video/avi video/x-msvideo video/msvideo",
     kEmbedded},
    {"org.matroska.mkv", "public.movie", "Matroska movie", "mkv", "video/x-matroska", kEmbedded},
    {"org.webmproject.webm", "public.movie", "WebM movie", "webm", "video/webm", kEmbedded},
    {"com.microsoft.windows-media-wmv", "public.movie", "Windows Media movie", "wmv", "video/x-ms-wmv",
     kEmbedded},
    {"public.3gpp", "public.movie", "3GPP movie", "3gp 3gpp", "video/3gpp", kEmbedded},

    // Documents
    {"com.adobe.pdf", "public.data public.composite-content", "PDF document", "pdf", "application/pdf",
     kEmbedded},
    {"com.adobe.postscript", "public.data", "PostScript document", "ps", "application/postscript", kEmbedded},
    {"com.adobe.encapsulated-postscript", "com.adobe.postscript", "Encapsulated PostScript document",
     "eps epsf", "application/eps image/x-eps", kEmbedded},
    {"com.adobe.illustrator.ai-image", "public.data public.image", "Illustrator document", "ai",
     "application/illustrator", kEmbedded},
    {"com.microsoft.word.doc", "public.data public.composite-content", "Word document (97-2004)", "doc dot",
     "application/msword", kEmbedded},
    {"com.microsoft.excel.xls", "public.data public.spreadsheet", "Excel workbook (97-2004)", "xls",
     "application/vnd.ms-excel", kEmbedded},
    {"com.microsoft.powerpoint.ppt", "public.data public.presentation", "PowerPoint presentation (97-2004)",
     "ppt", "application/vnd.ms-powerpoint", kEmbedded},
    {"org.openxmlformats.wordprocessingml.document", "org.openxmlformats.openxml public.composite-content",
     "Word document", "docx", "application/vnd.openxmlformats-officedocument.wordprocessingml.document",
     kEmbedded},
    {"org.openxmlformats.wordprocessingml.document.macroenabled",
     "org.openxmlformats.openxml public.composite-content", "Word document with macros", "docm",
     "application/vnd.ms-word.document.macroenabled.12", kEmbedded},
    {"org.openxmlformats.wordprocessingml.template", "org.openxmlformats.openxml public.composite-content",
     "Word template", "dotx", "application/vnd.openxmlformats-officedocument.wordprocessingml.template",
     kEmbedded},
    {"org.openxmlformats.wordprocessingml.template.macroenabled",
     "org.openxmlformats.openxml public.composite-content", "Word template with macros", "dotm",
     "application/vnd.ms-word.template.macroenabled.12", kEmbedded},
    {"org.openxmlformats.spreadsheetml.sheet", "org.openxmlformats.openxml public.spreadsheet",
     "Excel workbook", "xlsx", "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet",
     kEmbedded},
    {"org.openxmlformats.spreadsheetml.sheet.macroenabled", "org.openxmlformats.openxml public.spreadsheet",
     "Excel workbook with macros", "xlsm", "application/vnd.ms-excel.sheet.macroenabled.12", kEmbedded},
    {"org.openxmlformats.spreadsheetml.template", "org.openxmlformats.openxml public.spreadsheet",
     "Excel template", "xltx", "application/vnd.openxmlformats-officedocument.spreadsheetml.template",
     kEmbedded},
    {"org.openxmlformats.spreadsheetml.template.macroenabled",
     "org.openxmlformats.openxml public.spreadsheet", "Excel template with macros", "xltm",
     "application/vnd.ms-excel.template.macroenabled.12", kEmbedded},
    {"org.openxmlformats.presentationml.presentation", "org.openxmlformats.openxml public.presentation",
     "PowerPoint presentation", "pptx",
     "application/vnd.openxmlformats-officedocument.presentationml.presentation", kEmbedded},
    {"org.openxmlformats.presentationml.presentation.macroenabled",
     "org.openxmlformats.openxml public.presentation", "PowerPoint presentation with macros", "pptm",
     "application/vnd.ms-powerpoint.presentation.macroenabled.12", kEmbedded},
    {"org.openxmlformats.presentationml.slideshow", "org.openxmlformats.openxml public.presentation",
     "PowerPoint slide show", "ppsx",
     "application/vnd.openxmlformats-officedocument.presentationml.slideshow", kEmbedded},
    {"org.openxmlformats.presentationml.slideshow.macroenabled",
     "org.openxmlformats.openxml public.presentation", "PowerPoint slide show with macros", "ppsm",
     "application/vnd.ms-powerpoint.slideshow.macroenabled.12", kEmbedded},
    {"org.openxmlformats.presentationml.template", "org.openxmlformats.openxml public.presentation",
     "PowerPoint template", "potx", "application/vnd.openxmlformats-officedocument.presentationml.template",
     kEmbedded},
    {"org.openxmlformats.presentationml.template.macroenabled",
     "org.openxmlformats.openxml public.presentation", "PowerPoint template with macros", "potm",
     "application/vnd.ms-powerpoint.template.macroenabled.12", kEmbedded},
    {"org.oasis-open.opendocument.text", "org.oasis-open.opendocument public.composite-content",
     "OpenDocument text", "odt", "application/vnd.oasis.opendocument.text", kEmbedded},
    {"org.oasis-open.opendocument.text-template", "org.oasis-open.opendocument public.composite-content",
     "OpenDocument text template", "ott", "application/vnd.oasis.opendocument.text-template", kEmbedded},
    {"org.oasis-open.opendocument.spreadsheet", "org.oasis-open.opendocument public.spreadsheet",
     "OpenDocument spreadsheet", "ods", "application/vnd.oasis.opendocument.spreadsheet", kEmbedded},
    {"org.oasis-open.opendocument.spreadsheet-template", "org.oasis-open.opendocument public.spreadsheet",
     "OpenDocument spreadsheet template", "ots", "application/vnd.oasis.opendocument.spreadsheet-template",
     kEmbedded},
    {"org.oasis-open.opendocument.presentation", "org.oasis-open.opendocument public.presentation",
     "OpenDocument presentation", "odp", "application/vnd.oasis.opendocument.presentation", kEmbedded},
    {"org.oasis-open.opendocument.presentation-template", "org.oasis-open.opendocument public.presentation",
     "OpenDocument presentation template", "otp", "application/vnd.oasis.opendocument.presentation-template",
     kEmbedded},
    {"org.oasis-open.opendocument.graphics", "org.oasis-open.opendocument public.composite-content",
     "OpenDocument drawing", "odg", "application/vnd.oasis.opendocument.graphics", kEmbedded},
    {"org.oasis-open.opendocument.graphics-template", "org.oasis-open.opendocument public.composite-content",
     "OpenDocument drawing template", "otg", "application/vnd.oasis.opendocument.graphics-template",
     kEmbedded},
    {"org.idpf.epub-container", "public.data public.composite-content", "EPUB book", "epub",
     "application/epub+zip", kEmbedded},

    // Fonts
    {"public.truetype-ttf-font", "public.font", "TrueType font", "ttf", "font/ttf", kEmbedded},
    {"public.truetype-collection-font", "public.font", "TrueType collection", "ttc", "font/collection",
     kEmbedded},
    {"public.opentype-font", "public.font", "OpenType font", "otf", "font/otf", kEmbedded},

    // Archives and programs
    {"public.zip-archive", "com.pkware.zip-archive", "ZIP archive", "zip", "application/zip"},
    {"com.sun.java-archive", "public.zip-archive public.executable", "Java archive", "jar",
     "application/java-archive"},
    {"public.tar-archive", "public.data public.archive", "TAR archive", "tar", "application/x-tar"},
    {"org.gnu.gnu-zip-archive", "public.data public.archive", "Gzip archive", "gz gzip",
     "application/gzip application/x-gzip"},
    {"org.gnu.gnu-zip-tar-archive", "org.gnu.gnu-zip-archive", "Gzip TAR archive", "tgz", ""},
    {"public.bzip2-archive", "public.data public.archive", "Bzip2 archive", "bz2 bzip2",
     "application/x-bzip2"},
    {"org.tukaani.xz-archive", "public.data public.archive", "XZ archive", "xz", "application/x-xz"},
    {"org.7-zip.7-zip-archive", "public.data public.archive", "7-Zip archive", "7z",
     "application/x-7z-compressed"},
    {"com.rarlab.rar-archive", "public.data public.archive", "RAR archive", "rar",
     "application/vnd.rar application/x-rar-compressed"},
    {"public.iso-image", "public.data public.disk-image", "ISO disk image", "iso",
     "application/x-iso9660-image"},
    {"com.apple.disk-image-udif", "public.data public.disk-image", "Disk image", "dmg",
     "application/x-apple-diskimage"},
    {"public.unix-executable", "public.data public.executable", "Executable file", "",
     "application/x-executable application/x-sharedlib"},
    {"com.apple.mach-o-binary", "public.data public.executable", "Mach-O binary", "dylib",
     "application/x-mach-binary"},
    {"com.microsoft.windows-executable", "public.data public.executable", "Windows application", "exe",
     "application/x-msdownload application/vnd.microsoft.portable-executable"},
    {"com.microsoft.windows-dynamic-link-library", "public.data public.executable", "Windows library", "dll",
     ""},
};

// Which reader takes a type and all that conform to it, unless they have a row of their own.
constexpr struct {
  std::string_view identifier;
  Text text;
} kReaders[] = {
    {"com.adobe.pdf", Text::Pdf},
    {"org.oasis-open.opendocument", Text::OpenDocument},
    {"org.openxmlformats.openxml", Text::OpenXml},
    {"org.idpf.epub-container", Text::Epub},
    {"public.html", Text::Html},
    {"public.xhtml", Text::Html},
    {"public.rtf", Text::Rtf},
    {"public.text", Text::Plain},
};

// Of files whose type isn't known: what they hold decides. Types that conform to these are known ones.
constexpr std::string_view kUnknownTypes[] = {"public.data", "public.unix-executable"};

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

template <typename Visit>
void forEachWord(std::string_view words, Visit visit) {
  while (!words.empty()) {
    const size_t end = std::min(words.find(' '), words.size());
    visit(words.substr(0, end));
    words.remove_prefix(std::min(end + 1, words.size()));
  }
}

using Index = std::unordered_map<std::string_view, const ContentType*>;

Index indexBy(std::string_view ContentType::*words) {
  Index index;
  for (const ContentType& type : kTypes) {
    forEachWord(type.*words, [&](std::string_view word) { index.emplace(word, &type); });
  }
  return index;
}

const ContentType* find(const Index& index, std::string_view word) {
  const auto found = index.find(word);
  return found == index.end() ? nullptr : found->second;
}

// Appends the type behind all that it conforms to. The last of its parents goes first, so that read backwards
// the first comes first.
void appendBackwards(const ContentType& type, std::vector<std::string_view>& tree) {
  if (std::ranges::find(tree, type.identifier) != tree.end()) return;
  std::vector<std::string_view> parents;
  forEachWord(type.conformsTo, [&](std::string_view parent) { parents.push_back(parent); });
  for (auto parent = parents.rbegin(); parent != parents.rend(); ++parent) {
    if (const ContentType* const known = contentTypeNamed(*parent)) appendBackwards(*known, tree);
  }
  tree.push_back(type.identifier);
}

Text findTextOf(const ContentType& type) {
  if (std::ranges::find(kUnknownTypes, type.identifier) != std::end(kUnknownTypes)) return Text::Plain;
  for (const std::string_view identifier : contentTypeTree(type)) {
    for (const auto& reader : kReaders) {
      if (identifier == reader.identifier) return reader.text;
    }
  }
  return Text::None;
}

bool isOfFolders(const ContentType& type) {
  static std::optional<bool> known[std::size(kTypes)];  // found when they are asked for
  std::optional<bool>& is = known[&type - kTypes];
  if (!is) {
    const auto& tree = contentTypeTree(type);
    is = std::ranges::find(tree, "public.directory") != tree.end();
  }
  return *is;
}

}  // namespace

const ContentType* contentTypeNamed(std::string_view identifier) {
  static const Index index = indexBy(&ContentType::identifier);
  return find(index, identifier);
}

const ContentType* contentTypeOfMime(std::string_view mimeType) {
  if (mimeType.empty()) return nullptr;  // as that of nearly every file
  static const Index index = indexBy(&ContentType::mimeTypes);
  return find(index, lowerCase(mimeType.substr(0, mimeType.find_first_of("; "))));
}

const ContentType* contentTypeOfName(std::string_view name, Node node) {
  static const Index index = indexBy(&ContentType::extensions);
  const size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0) return nullptr;  // ".profile" has no extension
  const ContentType* const type = find(index, lowerCase(name.substr(dot + 1)));
  if (!type) return nullptr;
  return isOfFolders(*type) == (node == Node::Folder) ? type : nullptr;
}

const std::vector<std::string_view>& contentTypeTree(const ContentType& type) {
  static std::vector<std::string_view> trees[std::size(kTypes)];  // made when they are asked for
  std::vector<std::string_view>& tree = trees[&type - kTypes];
  if (tree.empty()) {
    appendBackwards(type, tree);
    std::ranges::reverse(tree);
  }
  return tree;
}

Text textOf(const ContentType& type) {
  static std::optional<Text> texts[std::size(kTypes)];  // found when they are asked for
  std::optional<Text>& text = texts[&type - kTypes];
  if (!text) text = findTextOf(type);
  return *text;
}

}  // namespace standin::metadata
