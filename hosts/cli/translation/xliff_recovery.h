#pragma once

#include "hosts/cli/checkouts/recovery.h"

/// The state of changes of translations that were not confirmed.
namespace vtdirect_cli {

/// Whether the file of the entry is the document's source XLIFF now, by its bytes. A file that is on the server
/// without a link is shown by no question. Makes requests.
[[nodiscard]] Finding FindSentXliff(Host& host, const JournalEntry& entry);

/// No question tells whether a translation is marked as published, so the entry stays open until the mark is
/// set once more, which changes nothing where it is set. Makes no request.
[[nodiscard]] Finding FindPublication(const JournalEntry& entry);

}  // namespace vtdirect_cli
