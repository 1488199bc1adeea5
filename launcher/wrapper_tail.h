// The wrapper tail: the records that configure the launcher, and behind them, in the same stream,
// the archives of what it installs. It follows the tail marker inside the executable, or is the
// file Resources/Tail of the bundle. docs/formats/wrapper-tail.md has the bytes.
#pragma once
#include <cstdio>
#include <string>

#include "formats/archive_signature.h"
#include "formats/property_block.h"
#include "formats/tail_format.h"
#include "formats/update_url.h"
#include "launcher/bundle_paths.h"
#include "support/owned.h"

namespace quillory {

/// Opens the tail: the executable behind the marker, else Resources/Tail from its first byte. Null,
/// with a log line, when the one that is needed cannot be opened.
OwnedFile openWrapperTail(const Executable& exe);

/// Reads the records; `stream` then stands on the first archive entry.
TailRecords readTailRecords(std::FILE* stream);

/// Whether the names and versions of the tail can be part of a folder name; the first one that
/// cannot, which would lead out of the shared directory, is logged.
bool hasUsableNames(const TailRecords& tail);

/// Log where the update URL comes from, and its final form.
void logUpdateUrlChoice(const UpdateUrl& url);
void logUpdateUrlInForce(const UpdateUrl& url);

/// Adds what the Java application is told of the tail, in the order that it expects.
void addTailProperties(const TailRecords& tail, bool isSilent, PropertyBlock& properties);

/// The key that archives are verified with, or null; it stays for the rest of the run.
Rsa_key* loadSignatureKey(const TailRecords& tail);

}  // namespace quillory
