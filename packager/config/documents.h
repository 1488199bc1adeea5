// Kinds of files that an application opens: [[documents]] of the configuration.
#pragma once
#include <string>
#include <vector>

namespace quillory::pack {

/// What the application does with such files.
enum class DocumentRole { kEditor, kViewer, kNone };

struct DocumentConfig {
  std::string name;                     ///< for people, "Hello letter"
  std::vector<std::string> extensions;  ///< without the dot
  DocumentRole role = DocumentRole::kEditor;
  std::string icon{};  ///< a file; "" for the application's
  unsigned line = 0;   ///< where it is written
};

/// `text` as the content of an XML element; control characters, which XML cannot write, are left
/// out.
std::string xmlEscaped(const std::string& text);

/// The name of a role as Info.plist has it.
const char* roleName(DocumentRole role);

/// What the systems call a kind of files: the application's identifier and the first extension,
/// "com.example.hello.letter".
std::string typeIdentifier(const std::string& application, const DocumentConfig& document);

/// The same as a media type, "application/x-com.example.hello.letter".
std::string mediaType(const std::string& application, const DocumentConfig& document);

/// The part of a desktop entry's MimeType that claims them and the schemes of URLs; "" for none.
std::string desktopMediaTypes(const std::string& application,
                              const std::vector<DocumentConfig>& documents,
                              const std::vector<std::string>& urlSchemes);

/// A package for the shared MIME-info database that tells which files they are; "" without any.
std::string mediaTypePackage(const std::string& application,
                             const std::vector<DocumentConfig>& documents);

}  // namespace quillory::pack
