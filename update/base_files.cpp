#include "update/base_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "formats/sha256.h"

namespace quillory::update {
namespace {

constexpr std::size_t kBasePiece = 256 * 1024;
constexpr int kForFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
// Not blocking: a pipe in the place of a file must not be waited for.
constexpr int kForFile = O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;

constexpr std::string_view kContents = "Contents/";
constexpr std::string_view kHome = "Contents/Home/";

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return number_; }
  bool isOpen() const { return number_ >= 0; }
  void replace(int number) {
    const int why = errno;
    close();
    number_ = number;
    errno = why;
  }

 private:
  void close() const {
    if (isOpen()) ::close(number_);
  }
  int number_;
};

}  // namespace

BaseFiles::BaseFiles(const std::string& folder, const std::string& home)
    : folder_(::open(folder.c_str(), kForFolder)),
      home_(home.empty() ? -1 : ::open(home.c_str(), kForFolder)) {}

BaseFiles::~BaseFiles() {
  for (const int opened : {folder_, home_})
    if (opened >= 0) close(opened);
}

// One folder after the other: opening the path as a whole would follow links on the way.
int BaseFiles::open(const std::string& archivePath) const {
  std::string path = archivePath;
  const bool isInHome = home_ >= 0 && (path.starts_with(kHome) || !path.starts_with(kContents));
  if (isInHome && path.starts_with(kHome)) path.erase(0, kHome.size());
  Descriptor above(fcntl(isInHome ? home_ : folder_, F_DUPFD_CLOEXEC, 0));
  std::size_t begin = 0;
  for (std::size_t end = path.find('/'); end != path.npos; end = path.find('/', begin)) {
    above.replace(openat(above.number(), path.substr(begin, end - begin).c_str(), kForFolder));
    begin = end + 1;
  }
  if (!above.isOpen()) return -1;
  return openat(above.number(), path.substr(begin).c_str(), kForFile);
}

std::string BaseFiles::read(const BaseFile& file,
                            const std::function<bool(std::string_view)>& take) const {
  if (folder_ < 0) return "the folder of the installed version cannot be opened";
  const Descriptor content(open(file.path));
  if (!content.isOpen()) return file.path + ": " + std::strerror(errno);
  struct stat info;
  if (fstat(content.number(), &info) != 0 || !S_ISREG(info.st_mode))
    return file.path + ": it is no plain file";
  const std::string changed = file.path + ": it has another length than it was installed with";
  if (info.st_size != file.length) return changed;
  std::vector<char> piece(
      static_cast<std::size_t>(std::min<std::int64_t>(kBasePiece, file.length)));
  for (std::int64_t left = file.length; left > 0;) {
    const auto most = static_cast<std::size_t>(
        std::min<std::int64_t>(static_cast<std::int64_t>(piece.size()), left));
    const ssize_t count = ::read(content.number(), piece.data(), most);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return file.path + ": " + std::strerror(errno);
    if (count == 0) return changed;
    left -= count;
    if (!take({piece.data(), static_cast<std::size_t>(count)})) return "";
  }
  return "";
}

std::string BaseFiles::differenceOf(const BaseFile& file) const {
  Sha256 digest;
  const std::string fault = read(file, [&](std::string_view bytes) {
    digest.update(bytes);
    return true;
  });
  if (!fault.empty()) return fault;
  if (digest.hex() == file.sha256) return "";
  return file.path + ": it has another content than it was installed with";
}

}  // namespace quillory::update
