#include "tests/update/folder_transport.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "formats/sha256.h"
#include "update/cancel.h"

namespace quillory::testing {
namespace {

using update::TransferEnd;
using update::TransferHead;
using update::TransferRequest;
using update::TransferResult;
using update::TransferSink;

constexpr std::int64_t kPiece = 1000;

std::string decoded(const std::string& name) {
  std::string text;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (name[i] == '%' && i + 2 < name.size()) {
      text += static_cast<char>(std::stoi(name.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else {
      text += name[i];
    }
  }
  return text;
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The body of an answer, on its way to who asked.
TransferResult send(const std::string& body, TransferHead head, const TransferRequest& request,
                    TransferSink& sink, std::int64_t cutAfter, std::int64_t& sent) {
  head.length = static_cast<std::int64_t>(body.size());
  if (!sink.begin(head)) return {TransferEnd::kNotTaken, head.status, "not taken"};
  const std::int64_t end = cutAfter < 0 ? head.length : std::min(cutAfter, head.length);
  while (sent < end) {
    const std::int64_t size = std::min(kPiece, end - sent);
    if (update::isCancelled) return {TransferEnd::kCancelled, head.status, "cancelled"};
    if (sent + size > request.mostBytes) return {TransferEnd::kTooLong, head.status, "too long"};
    const char* const piece = body.data() + sent;
    sent += size;
    if (!sink.take(piece, static_cast<std::size_t>(size)))
      return {TransferEnd::kNotTaken, head.status, "not taken"};
  }
  if (end < head.length) return {TransferEnd::kBroken, head.status, "the connection is gone"};
  return {TransferEnd::kComplete, head.status};
}

}  // namespace

void FolderTransport::serve(const std::string& base, const std::string& folder) {
  folders_.emplace_back(base, folder);
}

TransferResult FolderTransport::get(const TransferRequest& request, TransferSink& sink) {
  AskedFor about{"", request};
  std::string path;
  for (const auto& [base, folder] : folders_) {
    if (!request.url.starts_with(base)) continue;
    about.name = decoded(request.url.substr(base.size()));
    path = folder + '/' + about.name;
  }
  asked.push_back(about);
  AskedFor& its = asked.back();
  const Mishap what = mishap(its);
  if (path.empty() || what.isUnreachable)
    return {TransferEnd::kUnreachable, 0, "there is nobody of that name"};
  its.status = what.status;
  if (its.status == 0) its.status = std::filesystem::exists(path) || what.hasBody ? 200 : 404;
  if (its.status != 200) return {TransferEnd::kComplete, its.status};

  const std::string whole = what.hasBody ? what.body : contentOf(path);
  TransferHead head{.status = 200, .eTag = '"' + sha256Hex(whole).substr(0, 16) + '"'};
  if (request.ifNoneMatch == head.eTag) {
    its.status = 304;
    return {TransferEnd::kComplete, its.status};
  }
  std::string body = whole;
  const bool isSame = request.ifRange.empty() || request.ifRange == head.eTag;
  if (request.from > 0 && isSame && !what.ignoresRange) {
    if (request.from >= static_cast<std::int64_t>(whole.size())) {
      its.status = 416;
      return {TransferEnd::kComplete, its.status};
    }
    head.status = its.status = 206;
    head.from = request.from + what.shiftRange;
    body = whole.substr(static_cast<std::size_t>(head.from));
  }
  TransferResult result = send(body, head, request, sink, what.cutAfter, its.sent);
  result.status = its.status;
  return result;
}

int FolderTransport::countAsked(const std::string& part) const {
  return static_cast<int>(std::count_if(asked.begin(), asked.end(), [&](const AskedFor& one) {
    return one.name.find(part) != std::string::npos;
  }));
}

std::int64_t FolderTransport::sent() const {
  std::int64_t sum = 0;
  for (const AskedFor& one : asked) sum += one.sent;
  return sum;
}

}  // namespace quillory::testing
