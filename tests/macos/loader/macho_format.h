// The parts of the Mach-O file format that the loader reads: x86_64 executables, little-endian, as
// they lie in the file. Names are ours; the numbers are the format's.
#pragma once
#include <cstdint>

namespace quillory::loader {

inline constexpr std::uint32_t kMachO64 = 0xFEEDFACF;
inline constexpr std::uint32_t kUniversal = 0xBEBAFECA;  // big-endian in the file
inline constexpr std::uint32_t kX86_64 = 0x01000007;
inline constexpr std::uint32_t kExecutable = 2;

struct MachHeader {
  std::uint32_t magic;
  std::uint32_t cpu;
  std::uint32_t cpuSubtype;
  std::uint32_t fileType;
  std::uint32_t commandCount;
  std::uint32_t commandBytes;
  std::uint32_t flags;
  std::uint32_t reserved;
};

enum Command : std::uint32_t {
  kSegment = 0x19,
  kSymbols = 0x2,
  kDynamicSymbols = 0xB,
  kLoadLibrary = 0xC,
  kLoadDynamicLinker = 0xE,
  kUuid = 0x1B,
  kCodeSignature = 0x1D,
  kFixups = 0x80000022,  // also 0x22
  kFixupsOptional = 0x22,
  kFunctionStarts = 0x26,
  kMain = 0x80000028,
  kDataInCode = 0x29,
  kSourceVersion = 0x2A,
  kBuildVersion = 0x32,
};

struct LoadCommand {
  std::uint32_t command;
  std::uint32_t size;
};

struct SegmentCommand {
  LoadCommand command;
  char name[16];
  std::uint64_t address;
  std::uint64_t size;
  std::uint64_t fileOffset;
  std::uint64_t fileSize;
  std::uint32_t maximalProtection;
  std::uint32_t protection;  // 1 read, 2 write, 4 execute
  std::uint32_t sectionCount;
  std::uint32_t flags;
};
inline constexpr std::uint32_t kReadOnlyAfterFixups = 0x10;

struct SectionHeader {
  char name[16];
  char segment[16];
  std::uint64_t address;
  std::uint64_t size;
  std::uint32_t fileOffset;
  std::uint32_t alignment;
  std::uint32_t relocationOffset;
  std::uint32_t relocationCount;
  std::uint32_t flags;
  std::uint32_t reserved1;
  std::uint32_t reserved2;
  std::uint32_t reserved3;
};
enum SectionType : std::uint32_t {
  kZeroFill = 0x1,
  kInitializers = 0x9,
  kThreadRegular = 0x11,
  kThreadZeroFill = 0x12,
  kThreadVariables = 0x13,
};

struct FixupsCommand {
  LoadCommand command;
  std::uint32_t rebaseOffset;
  std::uint32_t rebaseSize;
  std::uint32_t bindOffset;
  std::uint32_t bindSize;
  std::uint32_t weakBindOffset;
  std::uint32_t weakBindSize;
  std::uint32_t lazyBindOffset;
  std::uint32_t lazyBindSize;
  std::uint32_t exportOffset;
  std::uint32_t exportSize;
};

struct MainCommand {
  LoadCommand command;
  std::uint64_t fileOffset;
  std::uint64_t stackSize;
};

struct LibraryCommand {
  LoadCommand command;
  std::uint32_t nameOffset;
  std::uint32_t timestamp;
  std::uint32_t currentVersion;
  std::uint32_t compatibilityVersion;
};

static_assert(sizeof(MachHeader) == 32 && sizeof(SegmentCommand) == 72);
static_assert(sizeof(SectionHeader) == 80 && sizeof(FixupsCommand) == 48);
static_assert(sizeof(MainCommand) == 24 && sizeof(LibraryCommand) == 24);

}  // namespace quillory::loader
