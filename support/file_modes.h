// Permissions of an installation: opened to every user, since whoever starts the application next
// may have to replace it.
#pragma once

namespace quillory {

// Both log the command, run it in a shell and return its status as system() does. A path that the
// shell would not take literally between double quotes, or as a path at all, gets the same log line
// and the same modes without a shell: 0, or the status of a command that failed.

/// "chmod -R 755": `path`, followed if it is a link, and all in it; links in it are not followed.
int chmodR755(const char* path);

/// "chmod 777": `path`, followed if it is a link.
int chmod777(const char* path);

}  // namespace quillory
