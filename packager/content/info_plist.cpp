#include "packager/content/info_plist.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "packager/config/name_rules.h"
#include "packager/reading/bundle_view.h"

namespace quillory::pack {
namespace {

constexpr char kHead[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n"
    "<dict>\n";
// Of the launcher, as it is built: on an older system it would not even be loaded.
constexpr char kMinimumSystem[] = "11.0";
constexpr char kFoot[] = "</dict>\n</plist>\n";
constexpr char kDocumentTypes[] = "\t<key>CFBundleDocumentTypes</key>\n";
constexpr char kExportedTypes[] = "\t<key>UTExportedTypeDeclarations</key>\n";
constexpr char kArchitectures[] = "\t<key>LSArchitecturePriority</key>\n";

std::string entry(const std::string& key, const std::string& text) {
  return "\t<key>" + key + "</key>\n\t<string>" + xmlEscaped(text) + "</string>\n";
}

std::string flag(const std::string& key) { return "\t<key>" + key + "</key>\n\t<true/>\n"; }

std::string textOrFlag(const std::string& key, const std::string& value) {
  if (value == "true" || value == "false") {
    return "\t<key>" + xmlEscaped(key) + "</key>\n\t<" + value + "/>\n";
  }
  return entry(xmlEscaped(key), value);
}

// Programs that are linked against a system of the last ten years may load nothing over plain http
// unless this says so.
std::string transportSecurity(const MacPlist& mac) {
  if (!mac.mayAskAnyHost && mac.insecureHost.empty()) {
    return "";
  }
  const std::string begin = "\t<key>NSAppTransportSecurity</key>\n\t<dict>\n";
  if (mac.mayAskAnyHost) {
    return begin + "\t\t<key>NSAllowsArbitraryLoads</key>\n\t\t<true/>\n\t</dict>\n";
  }
  return begin + "\t\t<key>NSExceptionDomains</key>\n\t\t<dict>\n\t\t\t<key>" +
         xmlEscaped(mac.insecureHost) +
         "</key>\n\t\t\t<dict>\n\t\t\t\t<key>NSExceptionAllowsInsecureHTTPLoads</key>\n"
         "\t\t\t\t<true/>\n\t\t\t</dict>\n\t\t</dict>\n\t</dict>\n";
}

// Those of a text that transportSecurity() has made.
std::string insecureHostIn(const std::string& plist) {
  const std::string before = "<key>NSExceptionDomains</key>\n\t\t<dict>\n\t\t\t<key>";
  const std::size_t at = plist.find(before);
  if (at == std::string::npos) {
    return "";
  }
  const std::size_t start = at + before.size();
  return plist.substr(start, plist.find("</key>", start) - start);
}

std::string urlTypes(const ApplicationConfig& application) {
  if (application.urlSchemes.empty()) {
    return "";
  }
  std::string schemes;
  for (const std::string& scheme : application.urlSchemes) {
    schemes += "\t\t\t\t<string>" + xmlEscaped(scheme) + "</string>\n";
  }
  return "\t<key>CFBundleURLTypes</key>\n\t<array>\n\t\t<dict>\n"
         "\t\t\t<key>CFBundleURLName</key>\n\t\t\t<string>" +
         xmlEscaped(application.identifier) +
         "</string>\n\t\t\t<key>CFBundleURLSchemes</key>\n\t\t\t<array>\n" + schemes +
         "\t\t\t</array>\n\t\t</dict>\n\t</array>\n";
}

std::string texts(const std::vector<std::string>& all) {
  std::string list = "<array>";
  for (const std::string& text : all) {
    list += "<string>" + xmlEscaped(text) + "</string>";
  }
  return list + "</array>\n";
}

std::string documentTypes(const std::string& application,
                          const std::vector<DocumentConfig>& documents) {
  if (documents.empty()) {
    return "";
  }
  std::string types = std::string(kDocumentTypes) + "\t<array>\n";
  for (const DocumentConfig& document : documents) {
    types += "\t\t<dict>\n";
    if (!document.icon.empty()) {
      types += "\t\t" + entry("CFBundleTypeIconFile", document.icon);
    }
    types += "\t\t" + entry("CFBundleTypeName", document.name);
    types += "\t\t" + entry("CFBundleTypeRole", roleName(document.role));
    types += "\t\t" + entry("LSHandlerRank", "Owner");
    types += "\t\t\t<key>LSItemContentTypes</key>\n\t\t\t" +
             texts({typeIdentifier(application, document)}) + "\t\t</dict>\n";
  }
  return types + "\t</array>\n";
}

// Which files they are.
std::string exportedTypes(const std::string& application,
                          const std::vector<DocumentConfig>& documents) {
  if (documents.empty()) {
    return "";
  }
  std::string types = std::string(kExportedTypes) + "\t<array>\n";
  for (const DocumentConfig& document : documents) {
    types += "\t\t<dict>\n\t\t\t<key>UTTypeConformsTo</key>\n\t\t\t" +
             texts({"public.data", "public.content"});
    types += "\t\t" + entry("UTTypeDescription", document.name);
    if (!document.icon.empty()) {
      types += "\t\t" + entry("UTTypeIconFile", document.icon);
    }
    types += "\t\t" + entry("UTTypeIdentifier", typeIdentifier(application, document));
    types +=
        "\t\t\t<key>UTTypeTagSpecification</key>\n"
        "\t\t\t<dict><key>public.filename-extension</key>" +
        texts(document.extensions);
    types += "\t\t\t</dict>\n\t\t</dict>\n";
  }
  return types + "\t</array>\n";
}

// Where the launcher could run as either, it runs as what the runtime inside of it is for.
std::string architecturePriority(const std::vector<std::string>& architectures) {
  return architectures.empty() ? "" : std::string(kArchitectures) + '\t' + texts(architectures);
}

// The texts between `begin` and the next "</array>".
std::vector<std::string> listIn(const std::string& text, std::size_t begin) {
  std::vector<std::string> found;
  const std::size_t end = text.find("</array>", begin);
  constexpr std::string_view kOpen = "<string>";
  for (std::size_t at = begin; (at = text.find(kOpen, at)) < end;) {
    const std::size_t start = at + kOpen.size();
    at = text.find("</string>", start);
    found.push_back(text.substr(start, at - start));
  }
  return found;
}

// Of a text that architecturePriority() has made.
std::vector<std::string> architecturesIn(const std::string& plist) {
  const std::size_t at = plist.find(kArchitectures);
  return at == std::string::npos ? std::vector<std::string>{} : listIn(plist, at);
}

// Of texts that documentTypes() and exportedTypes() have made.
std::vector<DocumentConfig> documentsIn(const std::string& plist) {
  std::vector<DocumentConfig> documents;
  std::size_t type = plist.find(kDocumentTypes);
  std::size_t tag = plist.find(kExportedTypes);
  if (type == std::string::npos || tag == std::string::npos) {
    return documents;
  }
  const std::size_t end = plist.find("\n\t</array>", type);
  while ((type = plist.find("\t\t<dict>", type + 1)) < end) {
    const std::string dict = plist.substr(type, plist.find("\t\t</dict>", type) - type);
    DocumentConfig document;
    document.name = plistText(dict, "CFBundleTypeName");
    document.icon = plistText(dict, "CFBundleTypeIconFile");
    for (const DocumentRole role : {DocumentRole::kViewer, DocumentRole::kNone}) {
      if (plistText(dict, "CFBundleTypeRole") == roleName(role)) {
        document.role = role;
      }
    }
    tag = plist.find("<key>public.filename-extension</key>", tag + 1);
    document.extensions =
        tag == std::string::npos ? std::vector<std::string>{} : listIn(plist, tag);
    if (document.extensions.empty()) {
      return {};
    }
    documents.push_back(std::move(document));
  }
  return documents;
}

// Those of a text that urlTypes() has made.
std::vector<std::string> urlSchemesIn(const std::string& plist) {
  std::vector<std::string> schemes;
  std::size_t at = plist.find("<key>CFBundleURLSchemes</key>");
  const std::size_t end = plist.find("</array>", at);
  while ((at = plist.find("<string>", at)) < end) {
    const std::size_t start = at + std::string("<string>").size();
    at = plist.find("</string>", start);
    schemes.push_back(plist.substr(start, at - start));
  }
  return schemes;
}

}  // namespace

bool isKeyOfOurs(const std::string& key) {
  constexpr std::array kKeys = {"CFBundleDevelopmentRegion",
                                "CFBundleDocumentTypes",
                                "CFBundleExecutable",
                                "CFBundleIconFile",
                                "CFBundleIdentifier",
                                "CFBundleInfoDictionaryVersion",
                                "CFBundleName",
                                "CFBundlePackageType",
                                "CFBundleShortVersionString",
                                "CFBundleURLTypes",
                                "CFBundleVersion",
                                "LSApplicationCategoryType",
                                "LSArchitecturePriority",
                                "LSMinimumSystemVersion",
                                "NSAppTransportSecurity",
                                "NSHighResolutionCapable",
                                "NSHumanReadableCopyright",
                                "NSPrincipalClass",
                                "NSRequiresAquaSystemAppearance",
                                "UTExportedTypeDeclarations"};
  return std::find(kKeys.begin(), kKeys.end(), key) != kKeys.end();
}

MacPlist macPlistOf(const Config& config) {
  MacPlist mac{.isLightOnly = !config.macos.followsAppearance, .more = config.macos.plist};
  mac.documents = config.documents;
  mac.mayAskAnyHost = config.update.urlKind == UpdateUrlKind::kDynamic &&
                      !config.update.url.starts_with("https://");
  constexpr std::string_view kPlain = "http://";
  if (!mac.mayAskAnyHost && config.update.urlKind == UpdateUrlKind::kStatic &&
      config.update.url.starts_with(kPlain)) {
    const std::string rest = config.update.url.substr(kPlain.size());
    mac.insecureHost = rest.substr(0, rest.find_first_of(":/?#"));
  }
  return mac;
}

std::string applicationInfoPlist(const ApplicationConfig& application, const std::string& iconFile,
                                 const MacPlist& mac) {
  std::string plist = kHead;
  plist += entry("CFBundleDevelopmentRegion", "en");
  plist += documentTypes(application.identifier, mac.documents);
  plist += entry("CFBundleExecutable", application.executable);
  if (!iconFile.empty()) {
    plist += entry("CFBundleIconFile", iconFile);
  }
  plist += entry("CFBundleIdentifier", application.identifier);
  plist += entry("CFBundleInfoDictionaryVersion", "6.0");
  plist += entry("CFBundleName", application.name);
  plist += entry("CFBundlePackageType", "APPL");
  plist += entry("CFBundleShortVersionString", application.displayVersion);
  plist += urlTypes(application);
  plist += entry("CFBundleVersion", std::to_string(application.version));
  if (!application.category.empty()) {
    plist += entry("LSApplicationCategoryType", application.category);
  }
  plist += architecturePriority(mac.architectures);
  plist += entry("LSMinimumSystemVersion", kMinimumSystem);
  plist += transportSecurity(mac);
  plist += flag("NSHighResolutionCapable");
  if (!application.copyright.empty()) {
    plist += entry("NSHumanReadableCopyright", application.copyright);
  }
  plist += entry("NSPrincipalClass", "NSApplication");
  if (mac.isLightOnly) {
    plist += flag("NSRequiresAquaSystemAppearance");
  }
  plist += exportedTypes(application.identifier, mac.documents);
  for (const auto& [key, value] : mac.more) {
    plist += textOrFlag(key, value);
  }
  return plist + kFoot;
}

std::vector<std::string> documentIconsIn(const std::string& plist) {
  std::vector<std::string> icons;
  for (const DocumentConfig& document : documentsIn(plist)) {
    icons.push_back(document.icon);
  }
  return icons;
}

bool isApplicationInfoPlist(const std::string& text) {
  // Read, and written again: whatever was added or changed is not there then.
  ApplicationConfig read;
  read.name = plistText(text, "CFBundleName");
  read.executable = plistText(text, "CFBundleExecutable");
  read.identifier = plistText(text, "CFBundleIdentifier");
  read.displayVersion = plistText(text, "CFBundleShortVersionString");
  read.version = std::strtoll(plistText(text, "CFBundleVersion").c_str(), nullptr, 10);
  read.category = plistText(text, "LSApplicationCategoryType");
  read.copyright = plistText(text, "NSHumanReadableCopyright");
  read.urlSchemes = urlSchemesIn(text);
  const auto has = [&](const char* key) { return text.find(key) != std::string::npos; };
  const MacPlist mac{.isLightOnly = has("<key>NSRequiresAquaSystemAppearance</key>"),
                     .insecureHost = insecureHostIn(text),
                     .mayAskAnyHost = has("<key>NSAllowsArbitraryLoads</key>"),
                     .documents = documentsIn(text),
                     .architectures = architecturesIn(text)};
  return !read.executable.empty() &&
         applicationInfoPlist(read, plistText(text, "CFBundleIconFile"), mac) == text;
}

std::string runtimeInfoPlist(const std::string& name, const std::string& version,
                             const std::string& executable) {
  std::string plist = kHead;
  plist += entry("CFBundleDevelopmentRegion", "en");
  if (!executable.empty()) {
    plist += entry("CFBundleExecutable", executable);
  }
  plist += entry("CFBundleIdentifier", "local.runtime." + executableNameFor(name));
  plist += entry("CFBundleInfoDictionaryVersion", "6.0");
  plist += entry("CFBundleName", name);
  plist += entry("CFBundlePackageType", "BNDL");
  plist += entry("CFBundleShortVersionString", version);
  plist += entry("CFBundleVersion", version);
  return plist + kFoot;
}

}  // namespace quillory::pack
