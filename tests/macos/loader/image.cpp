#include "tests/macos/loader/image.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstring>

#include "tests/macos/loader/load_error.h"

namespace quillory::loader {
namespace {

constexpr std::uint64_t kMemoryPage = 0x1000;
constexpr std::uint64_t kAddressLimit = std::uint64_t{1} << 46;

std::string nameFrom(const char (&field)[16]) { return {field, strnlen(field, sizeof field)}; }

std::uint64_t wholePages(std::uint64_t size) {
  return (size + kMemoryPage - 1) & ~(kMemoryPage - 1);
}

int linuxProtection(std::uint32_t protection) {
  return ((protection & 1) != 0 ? PROT_READ : 0) | ((protection & 2) != 0 ? PROT_WRITE : 0) |
         ((protection & 4) != 0 ? PROT_EXEC : 0);
}

void* pointer(std::uint64_t address) { return reinterpret_cast<void*>(address); }

template <class T>
T readAs(std::span<const std::uint8_t> part) {
  T value;
  std::memcpy(&value, part.data(), sizeof value);
  return value;
}

}  // namespace

Image::Image(std::vector<std::uint8_t> bytes, std::optional<std::uint64_t> slide)
    : bytes_(std::move(bytes)) {
  readCommands();
  if (!entryOffset_) throw LoadError("the image has no LC_MAIN");
  map(slide);
}

std::span<const std::uint8_t> Image::filePart(std::uint64_t offset, std::uint64_t size) const {
  if (offset > bytes_.size() || size > bytes_.size() - offset)
    throw LoadError("the image is cut: " + std::to_string(size) + " bytes at " +
                    std::to_string(offset) + " are not in it");
  return std::span(bytes_).subspan(offset, size);
}

void Image::readCommands() {
  const auto header = readAs<MachHeader>(filePart(0, sizeof(MachHeader)));
  if (header.magic != kMachO64) throw LoadError("no Mach-O image");
  if (header.cpu != kX86_64) throw LoadError("the image is not for x86_64");
  if (header.fileType != kExecutable) throw LoadError("the image is no executable");
  std::uint64_t offset = sizeof header;
  for (std::uint32_t i = 0; i < header.commandCount; ++i) {
    const auto command = readAs<LoadCommand>(filePart(offset, sizeof(LoadCommand)));
    if (command.size < sizeof command) throw LoadError("a load command without a size");
    filePart(offset, command.size);
    readCommand(command, offset);
    offset += command.size;
  }
}

void Image::readCommand(const LoadCommand& command, std::uint64_t offset) {
  switch (command.command) {
    case kSegment:
      return readSegment(offset, command.size);
    case kLoadLibrary: {
      const auto library = readAs<LibraryCommand>(filePart(offset, sizeof(LibraryCommand)));
      if (library.nameOffset >= command.size) throw LoadError("a library without a name");
      const auto name = filePart(offset + library.nameOffset, command.size - library.nameOffset);
      const char* text = reinterpret_cast<const char*>(name.data());
      libraries_.emplace_back(text, strnlen(text, name.size()));
      return;
    }
    case kFixups:
    case kFixupsOptional:
      fixups_ = readAs<FixupsCommand>(filePart(offset, sizeof(FixupsCommand)));
      return;
    case kMain:
      entryOffset_ = readAs<MainCommand>(filePart(offset, sizeof(MainCommand))).fileOffset;
      return;
    case kSymbols:
    case kDynamicSymbols:
    case kLoadDynamicLinker:
    case kUuid:
    case kCodeSignature:
    case kFunctionStarts:
    case kDataInCode:
    case kSourceVersion:
    case kBuildVersion:
      return;  // of no use for running it
  }
  // Among them chained fixups, which need another reader than fixups.cpp.
  char number[16];
  std::snprintf(number, sizeof number, "0x%x", command.command);
  throw LoadError(std::string("load command ") + number + " is not known here");
}

void Image::readSegment(std::uint64_t offset, std::uint32_t size) {
  const auto command = readAs<SegmentCommand>(filePart(offset, sizeof(SegmentCommand)));
  if (command.sectionCount > (size - sizeof command) / sizeof(SectionHeader))
    throw LoadError("segment " + nameFrom(command.name) + ": more sections than room for them");
  if (command.fileSize > command.size || command.address > kAddressLimit ||
      command.size > kAddressLimit || command.address % kMemoryPage != 0)
    throw LoadError("segment " + nameFrom(command.name) + ": impossible addresses");
  filePart(command.fileOffset, command.fileSize);
  segments_.push_back(
      {nameFrom(command.name), command.address, command.size, command.fileOffset, command.fileSize,
       linuxProtection(command.protection),
       (command.flags & kReadOnlyAfterFixups) != 0 || nameFrom(command.name) == "__DATA_CONST"});
  for (std::uint32_t i = 0; i < command.sectionCount; ++i) {
    const auto part =
        filePart(offset + sizeof command + i * sizeof(SectionHeader), sizeof(SectionHeader));
    const auto section = readAs<SectionHeader>(part);
    if (section.address < command.address || section.size > command.size ||
        section.address - command.address > command.size - section.size)
      throw LoadError("section " + nameFrom(section.name) + " is not inside its segment");
    sections_.push_back(section);
  }
}

// One reservation for all, so that nothing else comes between; the page at 0 is none of it.
void Image::map(std::optional<std::uint64_t> slide) {
  std::uint64_t first = kAddressLimit;
  std::uint64_t end = 0;
  for (const Segment& segment : segments_) {
    if (segment.protection == 0) continue;
    first = std::min(first, segment.address);
    end = std::max(end, segment.address + wholePages(segment.size));
  }
  if (first >= end) throw LoadError("the image has no segment to map");
  void* const wanted = slide ? pointer(first + *slide) : nullptr;
  void* const place = mmap(wanted, end - first, PROT_NONE,
                           MAP_PRIVATE | MAP_ANONYMOUS | (slide ? MAP_FIXED_NOREPLACE : 0), -1, 0);
  if (place == MAP_FAILED || (slide && place != wanted))
    throw LoadError("the image cannot be mapped: " + std::string(std::strerror(errno)));
  slide_ = static_cast<std::int64_t>(reinterpret_cast<std::uint64_t>(place) - first);
  for (const Segment& segment : segments_) {
    if (segment.protection == 0 || segment.size == 0) continue;
    std::uint8_t* const target = static_cast<std::uint8_t*>(place) + (segment.address - first);
    if (mprotect(target, wholePages(segment.size), PROT_READ | PROT_WRITE) != 0)
      throw LoadError("segment " + segment.name + " cannot be made writable");
    if (segment.fileSize > 0)
      std::memcpy(target, bytes_.data() + segment.fileOffset, segment.fileSize);
  }
}

std::uint8_t* Image::at(std::uint64_t linked, std::size_t size) const {
  for (const Segment& segment : segments_)
    if (segment.protection != 0 && linked >= segment.address && size <= segment.size &&
        linked - segment.address <= segment.size - size)
      return static_cast<std::uint8_t*>(pointer(linked + static_cast<std::uint64_t>(slide_)));
  throw LoadError("no segment has the address " + std::to_string(linked));
}

std::uint8_t* Image::inSegment(std::size_t segment, std::uint64_t offset, std::size_t size) const {
  if (segment >= segments_.size()) throw LoadError("a fixup in a segment that does not exist");
  const Segment& found = segments_[segment];
  if (found.protection == 0 || size > found.size || offset > found.size - size)
    throw LoadError("a fixup outside of segment " + found.name);
  return at(found.address + offset, size);
}

bool Image::contains(const void* address) const {
  const auto linked = reinterpret_cast<std::uint64_t>(address) - static_cast<std::uint64_t>(slide_);
  for (const Segment& segment : segments_)
    if (segment.protection != 0 && linked >= segment.address &&
        linked - segment.address < segment.size)
      return true;
  return false;
}

std::string_view Image::textAt(const void* address) const {
  const auto linked = reinterpret_cast<std::uint64_t>(address) - static_cast<std::uint64_t>(slide_);
  for (const Segment& segment : segments_) {
    if (segment.protection == 0 || linked < segment.address ||
        linked - segment.address >= segment.size)
      continue;
    const char* text = static_cast<const char*>(address);
    const std::size_t rest = segment.size - (linked - segment.address);
    const std::size_t length = strnlen(text, rest);
    if (length < rest) return {text, length};
  }
  throw LoadError("a text that is not in the image");
}

std::span<std::uint8_t> Image::section(std::string_view segment, std::string_view name) const {
  for (const SectionHeader& section : sections_)
    if (nameFrom(section.name) == name && nameFrom(section.segment) == segment)
      return {at(section.address, section.size), section.size};
  return {};
}

std::span<std::uint8_t> Image::dataSection(std::string_view name) const {
  for (const char* segment : {"__DATA", "__DATA_CONST", "__DATA_DIRTY"})
    if (const auto found = section(segment, name); !found.empty()) return found;
  return {};
}

std::vector<std::span<std::uint8_t>> Image::sectionsOf(SectionType type) const {
  std::vector<std::span<std::uint8_t>> found;
  for (const SectionHeader& section : sections_)
    if ((section.flags & 0xFF) == type)
      found.emplace_back(at(section.address, section.size), section.size);
  return found;
}

const Image::Segment& Image::codeSegment() const {
  for (const Segment& segment : segments_)
    if (segment.name == "__TEXT" && segment.fileOffset == 0) return segment;
  throw LoadError("the image has no __TEXT");
}

std::uint8_t* Image::header() const { return at(codeSegment().address, sizeof(MachHeader)); }

void* Image::entry() const { return at(codeSegment().address + *entryOffset_, 1); }

void Image::protect() const {
  for (const Segment& segment : segments_) {
    if (segment.protection == 0 || segment.size == 0) continue;
    const int protection = segment.isReadOnlyAfterFixups ? PROT_READ : segment.protection;
    if (mprotect(at(segment.address, 1), wholePages(segment.size), protection) != 0)
      throw LoadError("segment " + segment.name + " cannot be protected");
  }
}

}  // namespace quillory::loader
