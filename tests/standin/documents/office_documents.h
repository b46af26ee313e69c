// Office documents as their programs write them, as far as the text matters.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/standin/documents/zip_writer.h"

// Parts of an Office Open XML file: name and content type, both without what they all share, and the XML.
struct OpenXmlPart {
  std::string name;
  std::string type;
  std::string xml;
};

inline std::string openXml(const std::vector<OpenXmlPart>& parts) {
  std::string types =
      "<?xml version=\"1.0\"?><Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
      "<Default Extension=\"xml\" ContentType=\"application/xml\"/>";
  for (const OpenXmlPart& part : parts) {
    types += "<Override PartName=\"/" + part.name +
             "\" ContentType=\"application/vnd.openxmlformats-officedocument." + part.type + "+xml\"/>";
  }
  std::vector<ZipEntry> entries{stored("[Content_Types].xml", types + "</Types>")};
  for (const OpenXmlPart& part : parts) entries.push_back(stored(part.name, part.xml));
  return zipOf(entries);
}

inline std::string wordXml(const std::string& body) {
  return "<?xml version=\"1.0\"?><w:document "
         "xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\" "
         "xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\"><w:body>" +
         body + "</w:body></w:document>";
}

inline std::string docx(const std::string& body) {
  return openXml({{"word/document.xml", "wordprocessingml.document.main", wordXml(body)}});
}

inline std::string openDocument(const std::string& body, const std::string& manifest = "") {
  const std::string names =
      " xmlns:office=\"urn:o\" xmlns:text=\"urn:t\" xmlns:table=\"urn:b\" xmlns:draw=\"urn:d\" "
      "xmlns:dc=\"urn:c\" "
      "xmlns:manifest=\"urn:m\" xmlns:style=\"urn:s\" xmlns:svg=\"urn:v\"";
  return zipOf(
      {stored("mimetype", "application/vnd.oasis.opendocument.text"),
       stored("content.xml", "<office:document-content" + names + "><office:automatic-styles/><office:body>" +
                                 body + "</office:body></office:document-content>"),
       stored("styles.xml", "<office:document-styles" + names + "><style:header><text:p>head</text:p>" +
                                "</style:header></office:document-styles>"),
       stored("META-INF/manifest.xml", "<manifest:manifest" + names + "><manifest:file-entry>" + manifest +
                                           "</manifest:file-entry></manifest:manifest>")});
}
