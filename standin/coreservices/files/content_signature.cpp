// What the first bytes of a file tell about its type.
#include <unicode/utf8.h>
#include <algorithm>
#include <cstdint>
#include <string>

#include "standin/coreservices/files/content_type.h"

namespace standin::metadata {
namespace {

using namespace std::string_view_literals;

struct Signature {
  size_t offset;
  std::string_view bytes;
  std::string_view identifier;
};

// The first that fits decides.
constexpr Signature kSignatures[] = {
    {0, "\xFF\xD8\xFF"sv, "public.jpeg"},
    {0, "\x89PNG\r\n\x1A\n"sv, "public.png"},
    {0, "GIF87a"sv, "com.compuserve.gif"},
    {0, "GIF89a"sv, "com.compuserve.gif"},
    {0, "II*\0"sv, "public.tiff"},
    {0, "MM\0*"sv, "public.tiff"},
    {0, "\0\0\0\x0CjP  "sv, "public.jpeg-2000"},
    {0, "8BPS"sv, "com.adobe.photoshop-image"},
    {8, "WEBP"sv, "org.webmproject.webp"},
    {8, "WAVE"sv, "com.microsoft.waveform-audio"},
    {8, "AVI "sv, "public.avi"},
    {8, "AIFF"sv, "public.aiff-audio"},
    {8, "AIFC"sv, "public.aiff-audio"},
    {4, "ftypqt  "sv, "com.apple.quicktime-movie"},
    {4, "ftypM4A "sv, "com.apple.m4a-audio"},
    {4, "ftypM4V "sv, "com.apple.m4v-video"},
    {4, "ftyphei"sv, "public.heic"},
    {4, "ftypavif"sv, "public.avif"},
    {4, "ftyp3gp"sv, "public.3gpp"},
    {4, "ftyp"sv, "public.mpeg-4"},
    {4, "moov"sv, "com.apple.quicktime-movie"},
    {0, "ID3"sv, "public.mp3"},
    {0, "\xFF\xFB"sv, "public.mp3"},
    {0, "fLaC"sv, "org.xiph.flac"},
    {0, "OggS"sv, "org.xiph.ogg-audio"},
    {0, "MThd"sv, "public.midi-audio"},
    {0, "\x1A\x45\xDF\xA3"sv, "org.matroska.mkv"},
    {0, "\0\0\x01\xBA"sv, "public.mpeg"},
    {0, "%PDF-"sv, "com.adobe.pdf"},
    {0, "%!PS"sv, "com.adobe.postscript"},
    {0, "{\\rtf"sv, "public.rtf"},
    {30, "mimetypeapplication/vnd.oasis.opendocument.text-template"sv,
     "org.oasis-open.opendocument.text-template"},
    {30, "mimetypeapplication/vnd.oasis.opendocument.text"sv, "org.oasis-open.opendocument.text"},
    {30, "mimetypeapplication/vnd.oasis.opendocument.spreadsheet-template"sv,
     "org.oasis-open.opendocument.spreadsheet-template"},
    {30, "mimetypeapplication/vnd.oasis.opendocument.spreadsheet"sv,
     "org.oasis-open.opendocument.spreadsheet"},
    {30, "mimetypeapplication/vnd.oasis.opendocument.presentation-template"sv,
     "org.oasis-open.opendocument.presentation-template"},
    {30, "mimetypeapplication/vnd.oasis.opendocument.presentation"sv,
     "org.oasis-open.opendocument.presentation"},
    {30, "mimetypeapplication/vnd.oasis.opendocument.graphics-template"sv,
     "org.oasis-open.opendocument.graphics-template"},
    {30, "mimetypeapplication/vnd.oasis.opendocument.graphics"sv, "org.oasis-open.opendocument.graphics"},
    {30, "mimetypeapplication/epub+zip"sv, "org.idpf.epub-container"},
    {0, "PK\x03\x04"sv, "public.zip-archive"},
    {0, "\x1F\x8B"sv, "org.gnu.gnu-zip-archive"},
    {0, "BZh"sv, "public.bzip2-archive"},
    {0, "\xFD\x37zXZ\0"sv, "org.tukaani.xz-archive"},
    {0, "7z\xBC\xAF\x27\x1C"sv, "org.7-zip.7-zip-archive"},
    {0, "Rar!\x1A\x07"sv, "com.rarlab.rar-archive"},
    {257, "ustar"sv, "public.tar-archive"},
    {0, "\0\x01\0\0\0"sv, "public.truetype-ttf-font"},
    {0, "OTTO"sv, "public.opentype-font"},
    {0, "ttcf"sv, "public.truetype-collection-font"},
    {0,
     "\x7F"
     "ELF"sv,
     "public.unix-executable"},
    {0, "\xCE\xFA\xED\xFE"sv, "com.apple.mach-o-binary"},
    {0, "\xCF\xFA\xED\xFE"sv, "com.apple.mach-o-binary"},
    {0, "bplist"sv, "com.apple.property-list"},
    {0, "<?xml"sv, "public.xml"},
    {0, "<!DOCTYPE html"sv, "public.html"},
    {0, "<!doctype html"sv, "public.html"},
    {0, "<!DOCTYPE HTML"sv, "public.html"},
    {0, "<html"sv, "public.html"},
    {0, "<HTML"sv, "public.html"},
    {0, "BEGIN:VCARD"sv, "public.vcard"},
    {0, "BEGIN:VCALENDAR"sv, "com.apple.ical.ics"},
};

// Of the program named in a script's first line. The first that fits decides.
constexpr struct {
  std::string_view program;
  std::string_view identifier;
} kInterpreters[] = {
    {"python", "public.python-script"},
    {"perl", "public.perl-script"},
    {"ruby", "public.ruby-script"},
    {"php", "public.php-script"},
    {"node", "com.netscape.javascript-source"},
    {"make", "public.make-source"},
    {"sh", "public.shell-script"},
};

std::string_view identifierOfScript(std::string_view firstLine) {
  for (const auto& [program, identifier] : kInterpreters) {
    if (firstLine.find(program) != std::string_view::npos) return identifier;
  }
  return "public.script";
}

// A character that is cut off at the end is as good as a whole one.
bool isText(std::string_view bytes) {
  const auto length = static_cast<int32_t>(bytes.size());
  for (int32_t position = 0; position < length;) {
    const int32_t start = position;
    UChar32 character = 0;
    U8_NEXT(bytes.data(), position, length, character);
    if (character < 0) return length == static_cast<int32_t>(kSignatureLength) && start >= length - 3;
    const bool isSpace = character == '\t' || character == '\n' || character == '\f' || character == '\r';
    if ((character < ' ' && !isSpace) || character == 0x7F) return false;
  }
  return length > 0;
}

}  // namespace

const ContentType* contentTypeOfBytes(std::string_view bytes) {
  for (const Signature& signature : kSignatures) {
    if (bytes.size() >= signature.offset && bytes.substr(signature.offset).starts_with(signature.bytes)) {
      return contentTypeNamed(signature.identifier);
    }
  }
  if (!isText(bytes)) return nullptr;
  if (bytes.starts_with("#!")) return contentTypeNamed(identifierOfScript(bytes.substr(0, bytes.find('\n'))));
  return contentTypeNamed("public.plain-text");
}

}  // namespace standin::metadata
