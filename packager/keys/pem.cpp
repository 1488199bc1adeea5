#include "packager/keys/pem.h"

#include "formats/tomcrypt.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

constexpr std::size_t kPemColumns = 64;

std::string base64(const std::string& bytes) {
  std::string text(bytes.size() / 3 * 4 + 5, '\0');
  unsigned long length = text.size();
  if (base64_encode(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                    reinterpret_cast<unsigned char*>(text.data()), &length) != CRYPT_OK) {
    throw PackError("a key cannot be written as text");
  }
  text.resize(length);
  return text;
}

}  // namespace

PemBlock readPem(const std::string& path) {
  const std::string text = readWholeFile(path);
  const std::string begin = "-----BEGIN ";
  const std::string dashes = "-----";
  const std::size_t start = text.find(begin);
  const std::size_t kindEnd =
      start == std::string::npos ? start : text.find(dashes, start + begin.size());
  const std::size_t end = kindEnd == std::string::npos ? kindEnd : text.find("-----END ", kindEnd);
  if (end == std::string::npos) {
    throw PackError("is not a key in PEM format", kMakeKeyAdvice, {path, 0});
  }
  PemBlock block;
  block.kind = text.substr(start + begin.size(), kindEnd - start - begin.size());
  const std::string body = text.substr(kindEnd + dashes.size(), end - kindEnd - dashes.size());
  if (body.find("ENCRYPTED") != std::string::npos || block.kind == "ENCRYPTED PRIVATE KEY") {
    throw PackError("the key is encrypted, and a pass phrase is not asked for",
                    "decrypt it into a file that only you can read: openssl rsa -in " + path +
                        " -out plain.pem",
                    {path, 0});
  }
  block.der.resize(body.size());
  unsigned long length = block.der.size();
  if (::base64_decode(reinterpret_cast<const unsigned char*>(body.data()), body.size(),
                      reinterpret_cast<unsigned char*>(block.der.data()), &length) != CRYPT_OK) {
    throw PackError("the key file is damaged", "restore it from your backup", {path, 0});
  }
  block.der.resize(length);
  return block;
}

std::string pemText(const PemBlock& block) {
  const std::string text = base64(block.der);
  std::string pem = "-----BEGIN " + block.kind + "-----\n";
  for (std::size_t at = 0; at < text.size(); at += kPemColumns) {
    pem += text.substr(at, kPemColumns) + '\n';
  }
  return pem + "-----END " + block.kind + "-----\n";
}

}  // namespace quillory::pack
