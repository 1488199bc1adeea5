// The user's entry in the password database, for GNUstep.
#pragma once

namespace quillory::platform {

/// GNUstep ends the process with an exception that tells users nothing where the database does not
/// know the user, as in containers that run as a number. From now on it is told of one, with a home
/// folder that is not there. What asks by getpwuid(), as our own code does, gets the truth.
void provideUserEntry();

}  // namespace quillory::platform
