#pragma once

#include <optional>
#include <string>

#include "hosts/mount/cache/content_cache.h"
#include "hosts/mount/cache/facts_file.h"
#include "hosts/mount/requests/answer.h"

namespace vtdirect_mount {

/// One iteration of a document, as far as a program can ask a file for it.
struct Iteration {
  std::string uid;  ///< by which it is read
  std::string key;  ///< names the iteration and nothing else, whatever its file is called
  Facts facts;
};

/// Server and id of a UID, and the workspace of a working copy; the text itself when it is no UID.
[[nodiscard]] std::string KeyOfUid(const std::string& uid);

/// Whether what the UID names can change: the content of a working copy does, that of an iteration never.
[[nodiscard]] bool CanChange(const std::string& uid);

/// The facts of an iteration, if the file knows them. Makes no request.
/// @return neither a value nor an error otherwise
[[nodiscard]] Answer<Iteration> KnownFacts(const std::string& uid, const FactsFile& file);

/// Asks for the facts of an iteration, and keeps them in the file. Makes one request. Where the
/// server's record tells no length, the content is fetched into the cache and measured; a document without one has
/// the length 0.
/// @param stored  what a program of this machine has written to the document last: its time counts for an iteration
///                of its length
[[nodiscard]] Answer<Iteration> AskForFacts(const std::string& uid, FactsFile& file, ContentCache& cache,
                                            const std::optional<Facts>& stored);

}  // namespace vtdirect_mount
