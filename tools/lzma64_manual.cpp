// Prints the manual page of lzma64. A program of its own, run by the build: lzma64 travels in every
// bundle, and needs no page there.
#include <cstdio>

#include "support/manual_page.h"
#include "tools/lzma64_help.h"

int main() {
  quillory::ManualPage page("lzma64", "quillory-pack 1.0", "packs and unpacks one LZMA-alone file");
  page.heading("SYNOPSIS");
  page.literal(quillory::kLzma64Usage);
  page.heading("DESCRIPTION");
  page.paragraph(quillory::kLzma64Notes);
  page.paragraph(
      "A bundle of quillory-pack carries this program, and its launcher unpacks archives with it.");
  page.heading("EXIT STATUS");
  page.paragraph(quillory::kLzma64Statuses);
  page.heading("EXAMPLES");
  page.literal(quillory::kLzma64Example);
  page.heading("SEE ALSO");
  page.paragraph("quillory-pack(1)");
  return std::fputs(page.text().c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
}
