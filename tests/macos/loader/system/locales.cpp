// The _l family, by which the C++ library formats and reads. A locale is one of this machine's C
// library; null, which is the C locale there, is replaced by that.
#include <langinfo.h>
#include <locale.h>
#include <nl_types.h>
#include <wchar.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "tests/macos/loader/fail.h"
#include "tests/macos/loader/system/character_kinds.h"
#include "tests/macos/loader/system/tables.h"

namespace quillory::loader {
namespace {

locale_t ourLocale(locale_t theirs) {
  static const locale_t c = newlocale(LC_ALL_MASK, "C", nullptr);
  return theirs == nullptr ? c : theirs;
}

/// The calling thread has another locale for a while.
class ScopedLocale {
 public:
  explicit ScopedLocale(locale_t theirs) : before_(uselocale(ourLocale(theirs))) {}
  ~ScopedLocale() { uselocale(before_); }
  ScopedLocale(const ScopedLocale&) = delete;
  ScopedLocale& operator=(const ScopedLocale&) = delete;

 private:
  locale_t before_;
};

// Darwin counts its categories otherwise: 0 all, then those of `kCategories`.
constexpr int kCategories[] = {LC_ALL,     LC_COLLATE, LC_CTYPE,   LC_MONETARY,
                               LC_NUMERIC, LC_TIME,    LC_MESSAGES};

char* theirSetlocale(int category, const char* name) {
  if (category < 0 || category > 6) fail("setlocale: category", category);
  return setlocale(kCategories[category], name);
}

locale_t theirNewlocale(int mask, const char* name, locale_t base) {
  constexpr int kMasks[] = {LC_COLLATE_MASK,  LC_CTYPE_MASK,   LC_MESSAGES_MASK,
                            LC_MONETARY_MASK, LC_NUMERIC_MASK, LC_TIME_MASK};
  int ours = 0;
  for (int i = 0; i < 6; ++i)
    if ((mask & (1 << i)) != 0) ours |= kMasks[i];
  return newlocale(ours, name, base);
}

int theirFreelocale(locale_t locale) {
  if (locale != nullptr) freelocale(locale);
  return 0;
}

int theirMbCurMax(locale_t locale) {
  const ScopedLocale scoped(locale);
  return static_cast<int>(MB_CUR_MAX);
}

unsigned long theirMaskruneL(int c, unsigned long kinds, locale_t locale) {
  const ScopedLocale scoped(locale);
  return kindsOf(static_cast<wint_t>(c)) & kinds;
}

int theirTolowerL(int c, locale_t locale) {
  return static_cast<int>(towlower_l(static_cast<wint_t>(c), ourLocale(locale)));
}

int theirToupperL(int c, locale_t locale) {
  return static_cast<int>(towupper_l(static_cast<wint_t>(c), ourLocale(locale)));
}

int theirSnprintfL(char* buffer, std::size_t size, locale_t locale, const char* format, ...) {
  const ScopedLocale scoped(locale);
  va_list arguments;
  va_start(arguments, format);
  const int result = vsnprintf(buffer, size, format, arguments);
  va_end(arguments);
  return result;
}

int theirAsprintfL(char** text, locale_t locale, const char* format, ...) {
  const ScopedLocale scoped(locale);
  va_list arguments;
  va_start(arguments, format);
  const int result = vasprintf(text, format, arguments);
  va_end(arguments);
  return result;
}

int theirSscanfL(const char* text, locale_t locale, const char* format, ...) {
  const ScopedLocale scoped(locale);
  va_list arguments;
  va_start(arguments, format);
  const int result = vsscanf(text, format, arguments);
  va_end(arguments);
  return result;
}

/// Any function in another locale, which comes last.
template <auto kFunction, class Signature = decltype(kFunction)>
struct In;
template <auto kFunction, class Result, class... Parameters>
struct In<kFunction, Result (*)(Parameters...)> {
  static Result call(Parameters... arguments, locale_t locale) {
    const ScopedLocale scoped(locale);
    return kFunction(arguments...);
  }
};
template <auto kFunction, class Result, class... Parameters>
struct In<kFunction, Result (*)(Parameters...) noexcept>
    : In<kFunction, Result (*)(Parameters...)> {};

struct TheirConventions {
  char* texts[10];
  char numbers[14];
};

TheirConventions* theirLocaleconv(locale_t locale) {
  thread_local TheirConventions theirs;
  const ScopedLocale scoped(locale);
  const lconv* const ours = localeconv();
  std::memcpy(theirs.texts, ours, sizeof theirs.texts);
  const char numbers[] = {
      ours->int_frac_digits,   ours->frac_digits,        ours->p_cs_precedes,
      ours->p_sep_by_space,    ours->n_cs_precedes,      ours->n_sep_by_space,
      ours->p_sign_posn,       ours->n_sign_posn,        ours->int_p_cs_precedes,
      ours->int_n_cs_precedes, ours->int_p_sep_by_space, ours->int_n_sep_by_space,
      ours->int_p_sign_posn,   ours->int_n_sign_posn};
  std::memcpy(theirs.numbers, numbers, sizeof numbers);
  return &theirs;
}

TheirConventions* theirLocaleconvOfProcess() { return theirLocaleconv(LC_GLOBAL_LOCALE); }

// What the headers tell the optimiser of a function is of no use here.
#pragma GCC diagnostic ignored "-Wignored-attributes"
template <auto kFunction>
const void* inLocale() {
  return code(In<kFunction>::call);
}

}  // namespace

Symbols localeSymbols() {
  static const Symbol kSymbols[] = {
      {"____mb_cur_max_l", code(theirMbCurMax)},
      {"____tolower_l", code(theirTolowerL)},
      {"____toupper_l", code(theirToupperL)},
      {"___maskrune_l", code(theirMaskruneL)},
      {"_asprintf_l", code(theirAsprintfL)},
      {"_btowc_l", inLocale<&btowc>()},
      {"_catclose", code(catclose)},
      {"_catgets", code(catgets)},
      {"_catopen", code(catopen)},
      {"_freelocale", code(theirFreelocale)},
      {"_localeconv", code(theirLocaleconvOfProcess)},
      {"_localeconv_l", code(theirLocaleconv)},
      {"_mbrlen_l", inLocale<&mbrlen>()},
      {"_mbrtowc_l", inLocale<&mbrtowc>()},
      {"_mbsnrtowcs_l", inLocale<&mbsnrtowcs>()},
      {"_mbsrtowcs_l", inLocale<&mbsrtowcs>()},
      {"_mbtowc_l", inLocale<&mbtowc>()},
      {"_newlocale", code(theirNewlocale)},
      {"_setlocale", code(theirSetlocale)},
      {"_snprintf_l", code(theirSnprintfL)},
      {"_sscanf_l", code(theirSscanfL)},
      {"_strcoll_l", inLocale<&strcoll>()},
      {"_strftime_l", inLocale<&strftime>()},
      {"_strtod_l", inLocale<&strtod>()},
      {"_strtof_l", inLocale<&strtof>()},
      {"_strtold_l", inLocale<&strtold>()},
      {"_strtoll_l", inLocale<&strtoll>()},
      {"_strtoull_l", inLocale<&strtoull>()},
      {"_strxfrm_l", inLocale<&strxfrm>()},
      {"_wcrtomb_l", inLocale<&wcrtomb>()},
      {"_wcscoll_l", inLocale<&wcscoll>()},
      {"_wcsnrtombs_l", inLocale<&wcsnrtombs>()},
      {"_wcsxfrm_l", inLocale<&wcsxfrm>()},
      {"_wctob_l", inLocale<&wctob>()},
  };
  return kSymbols;
}

}  // namespace quillory::loader
