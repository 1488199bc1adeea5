// A Mach-O executable in memory: its segments stand where its code expects them, moved by a slide,
// writable until protect(). Everything that its load commands claim is checked against its bytes.
#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tests/macos/loader/macho_format.h"

namespace quillory::loader {

class Image {
 public:
  /// Maps the image `slide` bytes above the addresses that it is linked for; anywhere without one.
  /// Throws LoadError when the bytes are not those of an executable that can be mapped, or the
  /// addresses are taken. The mapping stays for good.
  Image(std::vector<std::uint8_t> bytes, std::optional<std::uint64_t> slide);

  std::int64_t slide() const { return slide_; }
  /// The address in memory of an address that the image is linked for. Throws LoadError where no
  /// segment has `size` bytes there.
  std::uint8_t* at(std::uint64_t linked, std::size_t size) const;
  /// The same for a place in a segment, as fixups name it.
  std::uint8_t* inSegment(std::size_t segment, std::uint64_t offset, std::size_t size) const;
  /// The text that begins at an address in memory. Throws LoadError unless the image holds all of
  /// it.
  std::string_view textAt(const void* address) const;

  /// A part of the file that a load command names; throws LoadError when it is not all there.
  std::span<const std::uint8_t> filePart(std::uint64_t offset, std::uint64_t size) const;

  /// The section's content in memory; empty without such a section.
  std::span<std::uint8_t> section(std::string_view segment, std::string_view name) const;
  /// The section with this name in whatever segment of data it stands.
  std::span<std::uint8_t> dataSection(std::string_view name) const;
  /// All sections of a kind.
  std::vector<std::span<std::uint8_t>> sectionsOf(SectionType type) const;
  /// The first of them that holds the address, as far as it goes from there.
  bool contains(const void* address) const;

  const FixupsCommand& fixups() const { return fixups_; }
  /// Install names of the libraries, in the order by which bindings count them from 1 on.
  const std::vector<std::string>& libraries() const { return libraries_; }
  /// Where LC_MAIN points.
  void* entry() const;
  /// The Mach-O header in memory, which is the begin of the code segment.
  std::uint8_t* header() const;

  /// Takes writing and executing away from what must not have it. To be called after fixups.
  void protect() const;

 private:
  struct Segment {
    std::string name;
    std::uint64_t address;
    std::uint64_t size;
    std::uint64_t fileOffset;
    std::uint64_t fileSize;
    int protection;
    bool isReadOnlyAfterFixups;
  };

  void readCommands();
  void readCommand(const LoadCommand& command, std::uint64_t offset);
  void readSegment(std::uint64_t offset, std::uint32_t size);
  void map(std::optional<std::uint64_t> slide);
  const Segment& codeSegment() const;

  std::vector<std::uint8_t> bytes_;
  std::vector<Segment> segments_;
  std::vector<SectionHeader> sections_;
  std::vector<std::string> libraries_;
  FixupsCommand fixups_{};
  std::optional<std::uint64_t> entryOffset_;
  std::int64_t slide_ = 0;
};

}  // namespace quillory::loader
