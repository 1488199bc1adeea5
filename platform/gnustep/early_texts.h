// Arguments and environment variables that are not UTF-8.
#pragma once

namespace quillory::platform {

/// GNUstep copies arguments and environment when its library is loaded, and later ends the process
/// over one that is not UTF-8. Before that happens a function of this file replaces the bytes of
/// such texts by '?'; this call puts them back. To be called once GNUstep has read its copies, and
/// before anybody else reads a text.
void restoreTexts();

/// Whether there is such a text, and it has not been put back.
bool areTextsHidden();

}  // namespace quillory::platform
