#include "packager/commands/release_source.h"

#include <cctype>
#include <filesystem>
#include <utility>

#include "packager/bytes/work_folder.h"
#include "packager/reading/plain_archive.h"
#include "packager/report/findings.h"
#include "update/curl_transport.h"

namespace quillory::pack {
namespace {

using update::TransferEnd;
using update::TransferHead;
using update::TransferRequest;
using update::TransferResult;
using update::TransferSink;

constexpr int kServed = 200;
constexpr int kPartial = 206;
constexpr int kNotFound = 404;

bool isHexDigit(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }

// "a%20b": "a b".
std::string decoded(const std::string& text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && isHexDigit(text[i + 1]) &&
        isHexDigit(text[i + 2])) {
      plain += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

// A folder that answers as a web server does that serves it.
class FolderFiles : public update::Transport {
 public:
  FolderFiles(std::string folder, std::size_t base) : folder_(std::move(folder)), base_(base) {}

  TransferResult get(const TransferRequest& request, TransferSink& sink) override {
    const std::string path = folder_ + '/' + decoded(request.url.substr(base_));
    std::error_code error;
    const auto size = static_cast<std::int64_t>(std::filesystem::file_size(path, error));
    if (error) {
      return {TransferEnd::kComplete, kNotFound, "", 0, 0};
    }
    const int status = request.from > 0 ? kPartial : kServed;
    TransferResult result{TransferEnd::kComplete, status, "", 0, 0};
    if (!sink.begin({status, request.from, size - request.from, ""})) {
      result.end = TransferEnd::kNotTaken;
      return result;
    }
    readRegion({path, request.from, size - request.from}, [&](std::string_view block) {
      result.bytesDown += static_cast<std::int64_t>(block.size());
      if (result.end != TransferEnd::kComplete) {
        return;
      }
      if (result.bytesDown > request.mostBytes) {
        result.end = TransferEnd::kTooLong;
      } else if (!sink.take(block.data(), block.size())) {
        result.end = TransferEnd::kNotTaken;
      }
    });
    return result;
  }

 private:
  std::string folder_;
  std::size_t base_;
};

// Counts the bytes of a body on their way.
class CountedTransfer : public TransferSink {
 public:
  explicit CountedTransfer(TransferSink& next) : next_(next) {}
  bool begin(const TransferHead& head) override { return next_.begin(head); }
  bool take(const char* bytes, std::size_t size) override {
    count += static_cast<std::int64_t>(size);
    return next_.take(bytes, size);
  }
  std::int64_t count = 0;

 private:
  TransferSink& next_;
};

std::string withSlash(const std::string& place) {
  return place.ends_with('/') ? place : place + '/';
}

}  // namespace

bool isWebAddress(const std::string& place) {
  return place.starts_with("http://") || place.starts_with("https://");
}

ReleaseSource::ReleaseSource(const std::string& place) {
  if (isWebAddress(place)) {
    base_ = withSlash(place);
    files_ = update::makeCurlTransport();
    return;
  }
  if (!std::filesystem::is_directory(place)) {
    throw PackError("is no folder", "name the folder with the release files, or their URL",
                    {place, 0});
  }
  base_ = "folder:/";
  files_ = std::make_unique<FolderFiles>(place, base_.size());
}

TransferResult ReleaseSource::get(const TransferRequest& request, TransferSink& sink) {
  stopIfInterrupted();
  CountedTransfer counted(sink);
  const TransferResult result = files_->get(request, counted);
  requests_.push_back({decoded(request.url.substr(base_.size())), result.status, counted.count,
                       result.end == TransferEnd::kComplete ? "" : result.reason});
  return result;
}

}  // namespace quillory::pack
