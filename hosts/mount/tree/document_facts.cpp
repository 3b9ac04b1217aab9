#include "hosts/mount/tree/document_facts.h"

#include <sys/stat.h>
#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <ctime>

#include "hosts/mount/requests/failure_errno.h"

namespace vtdirect_mount {
namespace {

[[nodiscard]] Answer<std::uint64_t> MeasureByDownload(const std::string& uid, ContentCache& cache) {
  const VtDirectManager::Outcome outcome;
  const std::string file = cache.NewFile();
  std::string result;
  struct stat status = {};
  if (!VtDirectManager::GetFile(uid.c_str(), file.c_str(), result, {}, {}) ||
      stat(file.c_str(), &status) != 0) {
    ContentCache::Drop(file);
    const int error = ErrorOf(outcome);
    // Only a document that can't be downloaded is empty: a length of 0 also means that the server tells none.
    if (error == ENOENT && VtDirectManager::ShouldCreate(uid.c_str())) return Found(std::uint64_t{0});
    return {error, nullptr, WordsOf(outcome)};
  }
  if (const int error = cache.Keep(KeyOfUid(uid), file); error != 0) return {error};
  return Found(static_cast<std::uint64_t>(status.st_size));
}

[[nodiscard]] Answer<std::uint64_t> AskForSize(const std::string& uid, ContentCache& cache) {
  const VtDirectManager::Outcome outcome;
  if (const auto size = VtDirectManager::GetContentSize(uid.c_str())) return Found(*size);
  if (!outcome.Empty()) return {ErrorOf(outcome), nullptr, WordsOf(outcome)};
  return MeasureByDownload(uid, cache);
}

}  // namespace

std::string KeyOfUid(const std::string& uid) {
  const auto parsed = VtDirectManager::ParseUID(uid.c_str());
  if (!parsed) return uid;
  std::string key = parsed->server + " " + parsed->document;
  if (!parsed->workspace.empty()) key += " " + parsed->workspace + " " + parsed->workingCopy;
  return key;
}

bool CanChange(const std::string& uid) {
  const auto parsed = VtDirectManager::ParseUID(uid.c_str());
  return !parsed || !parsed->workspace.empty();
}

Answer<Iteration> KnownFacts(const std::string& uid, const FactsFile& file) {
  if (CanChange(uid)) return {};
  const std::string key = KeyOfUid(uid);
  const auto known = file.Find(key);
  return known ? Found(Iteration{uid, key, *known}) : Answer<Iteration>{};
}

Answer<Iteration> AskForFacts(const std::string& uid, FactsFile& file, ContentCache& cache,
                              const std::optional<Facts>& stored) {
  const auto size = AskForSize(uid, cache);
  if (size.value == nullptr) return {size.error, nullptr, size.words};
  const bool isStored = stored && stored->size == *size.value;
  const Iteration iteration{uid, KeyOfUid(uid), {*size.value, isStored ? stored->since : std::time(nullptr)}};
  if (!CanChange(uid)) file.Keep(iteration.key, iteration.facts);
  return Found(iteration);
}

}  // namespace vtdirect_mount
