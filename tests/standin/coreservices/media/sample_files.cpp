#include "tests/standin/coreservices/media/sample_files.h"

#include <cstdint>

namespace sample {
namespace {

std::string fromHex(const char* digits) {
  std::string bytes;
  const auto value = [](char c) { return c <= '9' ? c - '0' : c - 'A' + 10; };
  for (; digits[0]; digits += 2) bytes += static_cast<char>(value(digits[0]) * 16 + value(digits[1]));
  return bytes;
}

std::string littleEndian(uint32_t value, int size) {
  std::string bytes;
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i));
  return bytes;
}

std::string bigEndian(uint32_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
  return bytes;
}

// The size of an ID3 tag or frame: seven bits in each byte.
std::string sevenBits(size_t value) {
  std::string bytes;
  for (int shift = 21; shift >= 0; shift -= 7) bytes += static_cast<char>((value >> shift) & 0x7F);
  return bytes;
}

std::string box(const std::string& type, const std::string& content) {
  return bigEndian(static_cast<uint32_t>(content.size() + 8)) + type + content;
}

uint32_t crc32(const std::string& bytes) {
  uint32_t crc = 0xFFFFFFFF;
  for (const char c : bytes) {
    crc ^= static_cast<unsigned char>(c);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (crc & 1 ? 0xEDB88320 : 0);
  }
  return ~crc;
}

// A ZIP archive whose members aren't compressed.
std::string zip(const std::vector<std::pair<std::string, std::string>>& members) {
  std::string file, directory;
  for (const auto& [name, content] : members) {
    const auto size = static_cast<uint32_t>(content.size());
    const std::string common = littleEndian(20, 2) + std::string(8, '\0') + littleEndian(crc32(content), 4) +
                               littleEndian(size, 4) + littleEndian(size, 4) +
                               littleEndian(static_cast<uint32_t>(name.size()), 2) + littleEndian(0, 2);
    directory += "PK\x01\x02" + littleEndian(20, 2) + common + std::string(10, '\0') +
                 littleEndian(static_cast<uint32_t>(file.size()), 4) + name;
    file += "PK\x03\x04" + common + name + content;
  }
  const auto count = littleEndian(static_cast<uint32_t>(members.size()), 2);
  return file + directory + "PK\x05\x06" + std::string(4, '\0') + count + count +
         littleEndian(static_cast<uint32_t>(directory.size()), 4) +
         littleEndian(static_cast<uint32_t>(file.size()), 4) + littleEndian(0, 2);
}

}  // namespace

std::string jpeg() {
  return fromHex(
      "FFD8FFE000104A46494600010101004800480000FFC0001108001000200301220002110103110"
      "1FFDA000C03010002110311003F0000FFD9");
}

std::string png() {
  return fromHex(
      "89504E470D0A1A0A0000000D49484452000000030000000208060000009D74661A0000000970485973000016250000162501"
      "495224F00000000B49444154789C6360C00500001A0001BC3CE0410000000049454E44AE426082");
}

std::string wave() {
  constexpr uint32_t kRate = 8000;
  return "RIFF" + littleEndian(36 + kRate, 4) + "WAVEfmt " + littleEndian(16, 4) + littleEndian(1, 2) +
         littleEndian(1, 2) + littleEndian(kRate, 4) + littleEndian(kRate, 4) + littleEndian(1, 2) +
         littleEndian(8, 2) + "data" + littleEndian(kRate, 4) + std::string(kRate, '\x80');
}

std::string avi() {
  std::string header;
  for (const uint32_t field : {40000u, 0u, 0u, 0u, 50u, 0u, 0u, 0u, 64u, 48u, 0u, 0u, 0u, 0u}) {
    header += littleEndian(field, 4);
  }
  const std::string list = "hdrlavih" + littleEndian(static_cast<uint32_t>(header.size()), 4) + header;
  const std::string content = "AVI LIST" + littleEndian(static_cast<uint32_t>(list.size()), 4) + list;
  return "RIFF" + littleEndian(static_cast<uint32_t>(content.size()), 4) + content;
}

std::string mpeg4Audio(uint32_t made) {
  constexpr uint32_t kUnitsPerSecond = 1000, kDuration = 5000;
  const std::string header = bigEndian(0) + bigEndian(made) + bigEndian(made) + bigEndian(kUnitsPerSecond) +
                             bigEndian(kDuration) + std::string(80, '\0');
  return box("ftyp", "M4A " + bigEndian(0) + "M4A isom") + box("moov", box("mvhd", header)) +
         box("mdat", std::string(4, '\0'));
}

std::string pdf() {
  const char* const objects[] = {
      "<</Type/Catalog/Pages 2 0 R/Lang(de)>>", "<</Type/Pages/Kids[3 0 R]/Count 1>>",
      "<</Type/Page/Parent 2 0 R/MediaBox[0 0 612 792]>>",
      ("<</Title(A Title)/Author(Ann)/Subject(A Subject)/Keywords(one, two)/Creator(A Writer)"
       "/Producer(A Producer)/CreationDate(D:20110305120000Z)>>")};
  std::string file = "%PDF-1.4\n", table = "xref\n0 5\n0000000000 65535 f \n";
  int number = 0;
  for (const char* const object : objects) {
    const std::string offset = std::to_string(file.size());
    table += std::string(10 - offset.size(), '0') + offset + " 00000 n \n";
    file += std::to_string(++number) + " 0 obj" + object + "endobj\n";
  }
  const std::string start = std::to_string(file.size());
  return file + table + "trailer<</Size 5/Root 1 0 R/Info 4 0 R>>\nstartxref\n" + start + "\n%%EOF\n";
}

std::string docx() {
  const std::string formats = "http://schemas.openxmlformats.org/";
  const std::string main = "word/document.xml";
  return zip(
      {{"[Content_Types].xml",
        "<Types xmlns='" + formats + "package/2006/content-types'><Override PartName='/" + main +
            "' ContentType='application/vnd.openxmlformats-officedocument.wordprocessingml.document."
            "main+xml'/></Types>"},
       {"docProps/core.xml",
        "<cp:coreProperties xmlns:cp='" + formats +
            "package/2006/metadata/core-properties' xmlns:dc='http://purl.org/dc/elements/1.1/'>"
            "<dc:title>T</dc:title><dc:subject>S</dc:subject><dc:creator>Ann</dc:creator>"
            "<cp:keywords>a, b; c</cp:keywords><cp:lastModifiedBy>Ed</cp:lastModifiedBy>"
            "</cp:coreProperties>"},
       {"docProps/app.xml", "<Properties xmlns='" + formats +
                                "officeDocument/2006/extended-properties'><Pages>3</Pages>"
                                "<Application>A Writer</Application><Company>Co</Company></Properties>"},
       {main, "<document/>"}});
}

std::string odt(const std::vector<std::string>& keywords) {
  const std::string names = "urn:oasis:names:tc:opendocument:xmlns:";
  std::string elements;
  for (const std::string& keyword : keywords) elements += "<meta:keyword>" + keyword + "</meta:keyword>";
  return zip(
      {{"mimetype", "application/vnd.oasis.opendocument.text"},
       {"meta.xml", "<office:document-meta xmlns:office='" + names + "office:1.0' xmlns:meta='" + names +
                        "meta:1.0'><office:meta>" + elements + "</office:meta></office:document-meta>"}});
}

std::string epub(const std::vector<std::string>& keywords) {
  std::string elements;
  for (const std::string& keyword : keywords) elements += "<dc:subject>" + keyword + "</dc:subject>";
  return zip({{"mimetype", "application/epub+zip"},
              {"META-INF/container.xml",
               "<container xmlns='urn:oasis:names:tc:opendocument:xmlns:container'><rootfiles><rootfile "
               "full-path='book.opf' media-type='application/oebps-package+xml'/></rootfiles></container>"},
              {"book.opf",
               "<package xmlns='http://www.idpf.org/2007/opf'><metadata "
               "xmlns:dc='http://purl.org/dc/elements/1.1/'><dc:creator>Ann</dc:creator>"
               "<dc:creator>Bob</dc:creator>" +
                   elements + "</metadata></package>"}});
}

std::string mp3(const std::vector<std::pair<std::string, std::string>>& frames) {
  std::string tags;
  for (const auto& [id, text] : frames) {
    const std::string content = '\x03' + text;  // in UTF-8
    tags += id + sevenBits(content.size()) + std::string(2, '\0') + content;
  }
  std::string file = "ID3" + std::string{4, 0, 0} + sevenBits(tags.size()) + tags;
  for (int i = 0; i < 40; ++i) file += fromHex("FFFB9064") + std::string(413, '\0');
  return file;
}

}  // namespace sample
