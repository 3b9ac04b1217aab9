#include "hosts/mount/tree/server_tree.h"

#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "hosts/mount/requests/failure_errno.h"

namespace vtdirect_mount {
namespace {

constexpr std::string_view idMark = "?id=";
// A listing with versions takes longer than one without, but gives the ids of all documents at once. It is
// asked for when so many documents a question would be saved.
constexpr std::size_t documentsAQuestion = 50;
constexpr auto forGood = std::chrono::hours(24 * 365);

[[nodiscard]] Answer<std::string> FindUid(const std::string& path) {
  const VtDirectManager::Outcome outcome;
  std::string uid = VtDirectManager::GetUID(path.c_str());
  if (uid.empty()) return {ErrorOf(outcome), nullptr, WordsOf(outcome)};
  return Found(std::move(uid));
}

}  // namespace

ServerTree::ServerTree(std::chrono::steady_clock::duration refresh, FactsFile& facts, ContentCache& cache,
                       std::function<void(const std::string&)> report)
    : keepsListings_(refresh.count() > 0),
      facts_(facts),
      cache_(cache),
      report_(std::move(report)),
      folders_(refresh),
      versions_(refresh),
      uids_(refresh),
      iterations_(forGood),
      workingCopies_(refresh) {}

// Every question to the server goes through here.
template <typename Value, typename Question>
Answer<Value> ServerTree::Asked(const std::string& what, Question question) {
  const auto begun = ServerPresence::Clock::now();
  if (presence_.IsAway(begun)) return {ETIMEDOUT};
  Answer<Value> answer = question();
  presence_.Note(begun, ServerPresence::Clock::now(), answer.error);
  if (answer.error != 0 && answer.error != ENOTSUP && report_) {
    report_(what + ": " + (answer.words.empty() ? std::strerror(answer.error) : answer.words));
  }
  return answer;
}

Answer<FolderListing> ServerTree::AskForFolder(const std::string& path) {
  return Asked<FolderListing>("cannot list " + path, [&] { return ListFolder(path); });
}

Answer<std::string> ServerTree::AskForUid(const std::string& path) {
  Answer<std::string> uid = Asked<std::string>("cannot find " + path, [&] { return FindUid(path); });
  if (uid.value != nullptr) LearnUidForm(*uid.value);
  return uid;
}

Answer<FolderListing> ServerTree::Folder(const std::string& path) {
  return folders_.Get(path, [&] { return AskForFolder(path); });
}

// A document that is not in its folder's listing is not there, whatever else has its name.
Answer<std::string> ServerTree::UidNow(const std::string& folder, const std::string& name) {
  const auto listing = folders_.AskNow(folder, [&] { return AskForFolder(folder); });
  if (listing.value == nullptr) return {listing.error};
  if (!listing.value->HasDocument(name)) return {ENOENT};
  return uids_.AskNow(folder + name, [&] { return AskForUid(folder + name); });
}

Answer<Iteration> ServerTree::Document(const std::string& folder, const std::string& name) {
  const Answer<std::string> uid = UidOf(folder, name);
  if (uid.value == nullptr) return {uid.error};
  const std::string path = folder + name;
  return WithTime(path, IterationOf(readBy_(*uid.value), times_.JustStored(path)));
}

Answer<Iteration> ServerTree::DocumentToRead(const std::string& folder, const std::string& name) {
  const Answer<std::string> uid = UidOf(folder, name);
  if (uid.value == nullptr) return {uid.error};
  const std::string readBy = readBy_(*uid.value);
  if (CanChange(readBy)) workingCopies_.Outdate(readBy);
  return Document(folder, name);
}

Answer<Iteration> ServerTree::PeekDocument(const std::string& folder, const std::string& name) {
  const Answer<std::string> uid = uids_.Peek(folder + name);
  if (uid.value == nullptr) return {};
  const std::string readBy = readBy_(*uid.value);
  return WithTime(folder + name, CanChange(readBy) ? workingCopies_.Peek(readBy) : iterations_.Peek(readBy));
}

Answer<Iteration> ServerTree::WithTime(const std::string& path, const Answer<Iteration>& found) {
  return found.value == nullptr ? found : Found(times_.WithTime(path, *found.value));
}

Answer<Iteration> ServerTree::IterationOf(const std::string& uid, const std::optional<Facts>& stored) {
  const auto learn = [&] {
    Answer<Iteration> known = KnownFacts(uid, facts_);
    if (known.value != nullptr) return known;
    return Asked<Iteration>("cannot read the record of " + uid,
                            [&] { return AskForFacts(uid, facts_, cache_, stored); });
  };
  return CanChange(uid) ? workingCopies_.Get(uid, learn) : iterations_.Get(uid, learn);
}

Answer<std::string> ServerTree::UidOf(const std::string& folder, const std::string& name) {
  const std::string path = folder + name;
  return uids_.Get(path, [&]() -> Answer<std::string> {
    if (std::string listed = UidByListing(folder, name); !listed.empty()) return Found(std::move(listed));
    return AskForUid(path);
  });
}

// Empty where the listing is not worth it, or does not tell.
std::string ServerTree::UidByListing(const std::string& folder, const std::string& name) {
  if (!IsListingWorthIt(folder)) return {};
  const auto versions = versions_.Get(folder, [&] {
    return Asked<FolderVersions>("cannot list versions of " + folder, [&] { return ListVersions(folder); });
  });
  if (versions.value == nullptr) return {};
  const auto found = versions.value->find(name);
  if (found == versions.value->end() || found->second.empty()) return {};
  return UidOfId(found->second.front().id);
}

bool ServerTree::IsListingWorthIt(const std::string& folder) {
  if (!keepsListings_) return false;
  if (versions_.Peek(folder).value != nullptr) return true;
  const auto listing = folders_.Peek(folder);
  if (listing.value == nullptr) return false;
  const std::lock_guard lock(mutex_);
  return !uidStart_.empty() && ++asked_[folder] * documentsAQuestion >= listing.value->documents();
}

std::string ServerTree::UidOfId(const std::string& id) {
  const std::lock_guard lock(mutex_);
  return uidStart_.empty() || id.empty() ? "" : uidStart_ + id;
}

void ServerTree::LearnUidForm(const std::string& uid) {
  const std::size_t mark = uid.find(idMark);
  if (mark == std::string::npos) return;
  const std::lock_guard lock(mutex_);
  uidStart_ = uid.substr(0, mark + idMark.size());
}

Answer<std::vector<DocumentVersion>> ServerTree::VersionsOf(const std::string& folder,
                                                            const std::string& name) {
  const Answer<std::string> uid = UidOf(folder, name);
  if (uid.value == nullptr) return {uid.error};
  LearnUidForm(*uid.value);
  std::vector<DocumentVersion> versions;
  const auto listed = versions_.Get(folder, [&] {
    return Asked<FolderVersions>("cannot list versions of " + folder, [&] { return ListVersions(folder); });
  });
  if (listed.value != nullptr) {
    const auto found = listed.value->find(name);
    if (found != listed.value->end()) versions = found->second;
    for (DocumentVersion& version : versions) version.id = UidOfId(version.id);
    return Found(std::move(versions));
  }
  if (listed.error != ENOTSUP) return {listed.error};
  const VtDirectManager::Outcome outcome;
  DocumentVersion newest;
  if (!VtDirectManager::GetLatest(uid.value->c_str(), newest.text, newest.id))
    return {ErrorOf(outcome), nullptr, WordsOf(outcome)};
  versions.push_back(std::move(newest));
  return Found(std::move(versions));
}

void ServerTree::Outdate() {
  folders_.Outdate();
  versions_.Outdate();
  uids_.Outdate();
  workingCopies_.Outdate();
  times_.Forget();
}

// A listing with versions has to be worth it again, so that many check-ins one after the other don't cost one each.
void ServerTree::OutdateIterations() {
  uids_.Outdate();
  versions_.Outdate();
  const std::lock_guard lock(mutex_);
  asked_.clear();
}

void ServerTree::OutdateStored(const std::string& folder, const std::string& name, const Facts& stored) {
  Outdate(folder, name);
  times_.NoteStored(folder + name, stored);
}

void ServerTree::Outdate(const std::string& folder, const std::string& name) {
  folders_.Outdate(folder);
  versions_.Outdate(folder);
  uids_.Outdate(folder + name);
  workingCopies_.Outdate();
}

}  // namespace vtdirect_mount
