// lzma64: packs and unpacks one LZMA-alone file. The launcher carries it in its tail and runs
// "lzma64 d IN OUT" on archives.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "lzma/lzma_alone.h"
#include "support/output_file.h"
#include "support/owned.h"
#include "support/standard_streams.h"
#include "tools/lzma64_help.h"

namespace {

using quillory::Durability;
using quillory::LzmaCoder;
using quillory::OutputFile;
using quillory::OwnedFile;

constexpr int kFailed = 1;
constexpr int kWrongUse = 2;
constexpr std::size_t kInputBuffer = 256 * 1024;

// The second line of the usage and those behind it stand below the first.
std::string help() {
  std::string text = "usage: ";
  for (const char* c = quillory::kLzma64Usage; *c != '\0'; ++c) {
    text += *c;
    if (*c == '\n' && c[1] != '\0') {
      text += "       ";
    }
  }
  return text + '\n' + quillory::kLzma64Notes + "\nexit status: " + quillory::kLzma64Statuses +
         "\nexample: " + quillory::kLzma64Example;
}

struct Request {
  bool decodes = false;
  int level = quillory::kLzmaDefaultLevel;
  std::string in;
  std::string out;
};

bool parseLevel(const std::string& option, int& level) {
  if (option.size() != 2 || option[0] != '-' || option[1] < '0' || option[1] > '9') {
    return false;
  }
  level = option[1] - '0';
  return true;
}

bool parse(std::vector<std::string> arguments, Request& request) {
  if (arguments.empty() || (arguments[0] != "d" && arguments[0] != "e")) {
    return false;
  }
  request.decodes = arguments[0] == "d";
  arguments.erase(arguments.begin());
  if (!request.decodes && arguments.size() == 3 && parseLevel(arguments[0], request.level)) {
    arguments.erase(arguments.begin());
  }
  if (arguments.size() != 2) {
    return false;
  }
  request.in = arguments[0];
  request.out = arguments[1];
  return true;
}

int fail(const std::string& message) {
  std::fprintf(stderr, "lzma64: %s\n", message.c_str());
  return kFailed;
}

int failOnCoder(const Request& request, const LzmaCoder& coder, const OutputFile& out) {
  return fail(out.error().empty() ? request.in + ": " + coder.error() : out.error());
}

int run(const Request& request) {
  const OwnedFile in(std::fopen(request.in.c_str(), "rb"));
  if (!in) {
    return fail(request.in + ": cannot be opened: " + std::strerror(errno));
  }
  // Whoever keeps what was unpacked flushes the folder that it is in, once for all of its files.
  OutputFile out(request.out, 0666, Durability::kLeftToTheSystem);
  if (!out.isOpen()) {
    return fail(out.error());
  }
  const auto sink = [&out](const unsigned char* data, std::size_t size) {
    return out.write(data, size);
  };
  LzmaCoder coder =
      request.decodes ? LzmaCoder::decoder(sink) : LzmaCoder::encoder(request.level, sink);
  std::vector<char> buffer(kInputBuffer);
  while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), in.get())) {
    if (!coder.write(buffer.data(), size)) {
      return failOnCoder(request, coder, out);
    }
  }
  if (std::ferror(in.get())) {
    return fail(request.in + ": cannot be read: " + std::strerror(errno));
  }
  if (!coder.finish()) {
    return failOnCoder(request, coder, out);
  }
  return out.commit() ? 0 : fail(out.error());
}

}  // namespace

int main(int argc, char** argv) {
  quillory::fillStandardStreams();
  // The status tells what became of it, also where nobody reads the message.
  quillory::outliveReaders();
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  if (arguments.size() == 1 && (arguments[0] == "--help" || arguments[0] == "-h")) {
    std::fputs(help().c_str(), stdout);
    return 0;
  }
  Request request;
  if (!parse(arguments, request)) {
    std::fputs(help().c_str(), stderr);
    return kWrongUse;
  }
  quillory::removeUnfinishedFilesOnSignals();
  return run(request);
}
