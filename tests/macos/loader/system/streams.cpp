// FILE. The image looks into the first two members itself (getc_unlocked is a macro), so each of
// its streams is a block of Darwin's layout, with one of the C library's behind it. The count of
// bytes that are ready is always 0: every macro ends in a call here.
#include <cstdarg>
#include <cstdint>
#include <cstdio>

#include "tests/macos/loader/fail.h"
#include "tests/macos/loader/system/tables.h"

namespace quillory::loader {
namespace {

struct TheirStream {
  unsigned char* next;
  int ready;
  int room;
  std::FILE* ours;  // in their place for flags, file, and buffer
  unsigned char rest[128];
};
static_assert(sizeof(TheirStream) == 152);

TheirStream theirInput{};
TheirStream theirOutput{};
TheirStream theirErrors{};
TheirStream* theirInputPlace = &theirInput;
TheirStream* theirOutputPlace = &theirOutput;
TheirStream* theirErrorsPlace = &theirErrors;

TheirStream* wrapped(std::FILE* ours) {
  return ours == nullptr ? nullptr : new TheirStream{nullptr, 0, 0, ours, {}};
}

// What the JVM prints by a function of the image comes with a standard stream of this machine's, of
// which the JVM is.
std::FILE* oursBehind(TheirStream* stream) {
  const void* const place = stream;
  for (std::FILE* const ours : {stdout, stderr})
    if (place == ours) return ours;
  return stream->ours;
}

TheirStream* theirFopen(const char* path, const char* mode) { return wrapped(fopen(path, mode)); }

TheirStream* theirFdopen(int file, const char* mode) { return wrapped(fdopen(file, mode)); }

TheirStream* theirFmemopen(void* bytes, std::size_t size, const char* mode) {
  return wrapped(fmemopen(bytes, size, mode));
}

TheirStream* theirTmpfile() { return wrapped(tmpfile()); }

int theirFclose(TheirStream* stream) {
  const int result = fclose(stream->ours);
  if (stream != &theirInput && stream != &theirOutput && stream != &theirErrors) delete stream;
  return result;
}

std::size_t theirFread(void* bytes, std::size_t size, std::size_t count, TheirStream* stream) {
  return fread(bytes, size, count, stream->ours);
}

std::size_t theirFwrite(const void* bytes, std::size_t size, std::size_t count,
                        TheirStream* stream) {
  return fwrite(bytes, size, count, stream->ours);
}

int theirFgetc(TheirStream* stream) { return fgetc(stream->ours); }

// What the macro calls when nothing is ready: it has taken one off the count.
int theirRefill(TheirStream* stream) {
  stream->ready = 0;
  return fgetc(stream->ours);
}

int theirUngetc(int c, TheirStream* stream) { return ungetc(c, stream->ours); }

char* theirFgets(char* text, int size, TheirStream* stream) {
  return fgets(text, size, stream->ours);
}

int theirFputc(int c, TheirStream* stream) { return fputc(c, stream->ours); }

int theirFputs(const char* text, TheirStream* stream) { return fputs(text, stream->ours); }

int theirFflush(TheirStream* stream) {
  return fflush(stream == nullptr ? nullptr : oursBehind(stream));
}

int theirFseek(TheirStream* stream, long offset, int from) {
  return fseek(stream->ours, offset, from);
}

long theirFtell(TheirStream* stream) { return ftell(stream->ours); }

void theirRewind(TheirStream* stream) { rewind(stream->ours); }

int theirFerror(TheirStream* stream) { return ferror(stream->ours); }

int theirFeof(TheirStream* stream) { return feof(stream->ours); }

void theirClearerr(TheirStream* stream) { clearerr(stream->ours); }

int theirFileno(TheirStream* stream) { return fileno(stream->ours); }

int theirSetvbuf(TheirStream* stream, char* buffer, int mode, std::size_t size) {
  return setvbuf(stream->ours, buffer, mode, size);  // whose modes are the same
}

int theirVfprintf(TheirStream* stream, const char* format, va_list arguments) {
  return vfprintf(oursBehind(stream), format, arguments);
}

int theirFprintf(TheirStream* stream, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int result = vfprintf(stream->ours, format, arguments);
  va_end(arguments);
  return result;
}

int theirPrintf(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int result = vprintf(format, arguments);
  va_end(arguments);
  return result;
}

int theirVprintf(const char* format, va_list arguments) { return vprintf(format, arguments); }

int theirPuts(const char* text) { return puts(text); }

int theirPutchar(int c) { return putchar(c); }

}  // namespace

Symbols streamSymbols() {
  theirInput.ours = stdin;
  theirOutput.ours = stdout;
  theirErrors.ours = stderr;
  static const Symbol kSymbols[] = {
      {"___srget", code(theirRefill)},    {"___stderrp", &theirErrorsPlace},
      {"___stdinp", &theirInputPlace},    {"___stdoutp", &theirOutputPlace},
      {"_clearerr", code(theirClearerr)}, {"_fclose", code(theirFclose)},
      {"_fdopen", code(theirFdopen)},     {"_feof", code(theirFeof)},
      {"_ferror", code(theirFerror)},     {"_fflush", code(theirFflush)},
      {"_fgetc", code(theirFgetc)},       {"_fgets", code(theirFgets)},
      {"_fileno", code(theirFileno)},     {"_fmemopen", code(theirFmemopen)},
      {"_fopen", code(theirFopen)},       {"_fprintf", code(theirFprintf)},
      {"_fputc", code(theirFputc)},       {"_fputs", code(theirFputs)},
      {"_fread", code(theirFread)},       {"_fseek", code(theirFseek)},
      {"_fseeko", code(theirFseek)},      {"_ftell", code(theirFtell)},
      {"_ftello", code(theirFtell)},      {"_fwrite", code(theirFwrite)},
      {"_getc", code(theirFgetc)},        {"_printf", code(theirPrintf)},
      {"_putc", code(theirFputc)},        {"_putchar", code(theirPutchar)},
      {"_puts", code(theirPuts)},         {"_rewind", code(theirRewind)},
      {"_setvbuf", code(theirSetvbuf)},   {"_tmpfile", code(theirTmpfile)},
      {"_ungetc", code(theirUngetc)},     {"_vfprintf", code(theirVfprintf)},
      {"_vprintf", code(theirVprintf)},
  };
  return kSymbols;
}

}  // namespace quillory::loader
