#include "packager/config/documents.h"

namespace quillory::pack {

std::string xmlEscaped(const std::string& text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      default:
        if (static_cast<unsigned char>(c) >= 0x20 || c == '\t' || c == '\n') {
          out += c;
        }
    }
  }
  return out;
}

const char* roleName(DocumentRole role) {
  switch (role) {
    case DocumentRole::kEditor:
      return "Editor";
    case DocumentRole::kViewer:
      return "Viewer";
    case DocumentRole::kNone:
      return "None";
  }
  return "None";
}

std::string typeIdentifier(const std::string& application, const DocumentConfig& document) {
  return application + '.' + document.extensions.front();
}

std::string mediaType(const std::string& application, const DocumentConfig& document) {
  return "application/x-" + typeIdentifier(application, document);
}

std::string desktopMediaTypes(const std::string& application,
                              const std::vector<DocumentConfig>& documents,
                              const std::vector<std::string>& urlSchemes) {
  std::string types;
  for (const DocumentConfig& document : documents) {
    types += mediaType(application, document) + ';';
  }
  for (const std::string& scheme : urlSchemes) {
    types += "x-scheme-handler/" + scheme + ';';
  }
  return types;
}

std::string mediaTypePackage(const std::string& application,
                             const std::vector<DocumentConfig>& documents) {
  if (documents.empty()) {
    return "";
  }
  std::string package =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n";
  for (const DocumentConfig& document : documents) {
    package += "  <mime-type type=\"" + xmlEscaped(mediaType(application, document)) +
               "\">\n    <comment>" + xmlEscaped(document.name) + "</comment>\n";
    for (const std::string& extension : document.extensions) {
      package += "    <glob pattern=\"*." + xmlEscaped(extension) + "\"/>\n";
    }
    package += "  </mime-type>\n";
  }
  return package + "</mime-info>\n";
}

}  // namespace quillory::pack
