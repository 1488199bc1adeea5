// What may stand in a configured argument besides plain text: "[entry]" for the values of another
// entry, and "%NAME%" for an environment variable.
#pragma once
#include "runner/argument_list.h"

namespace quillory {

/// Replaces every argument that begins with '[' by the values of the entry of that name. An import
/// that is not found stays as it is, with a message on standard output. The first value of an
/// import is not looked at again, the others are: an import in another entry's first line stays.
///
/// kEntryFound, or kListFull (told on standard output, the list must not be used) when the values
/// are more than an import or the list has room for, which is also how imports in a circle end.
int replaceImportStrings(ArgumentList& list);

/// Replaces the variables in every argument; an unknown one stays as it is. What no longer fits in
/// the argument's slot is lost.
///
/// Behind a variable the search goes on at the position where the variable ended before it was
/// replaced. With a value of another length than the "%NAME%" that is not the end of the value: a
/// shorter one hides what follows it, and a longer one is searched too. This is kept by intent.
void replaceEnvStrings(ArgumentList& list);

}  // namespace quillory
