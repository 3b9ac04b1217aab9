#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "hosts/mount/requests/kept_answers.h"
#include "hosts/mount/requests/server_presence.h"
#include "hosts/mount/tree/document_facts.h"
#include "hosts/mount/tree/document_times.h"
#include "hosts/mount/tree/folder_listing.h"

namespace vtdirect_mount {

/// The server's tree as it was last seen. Each answer is kept for the time of refreshing, and the facts of an
/// iteration for good. Functions whose names begin with "Peek" make no request and give neither a value nor
/// an error for what they don't know; all others may make requests and block. Any thread.
class ServerTree {
 public:
  /// @param refresh  how long a folder's listing counts
  /// @param report   told what went wrong, for the log
  ServerTree(std::chrono::steady_clock::duration refresh, FactsFile& facts, ContentCache& cache,
             std::function<void(const std::string&)> report);

  /// What is in a folder.
  /// @param path  with its closing "/"
  [[nodiscard]] Answer<FolderListing> Folder(const std::string& path);
  [[nodiscard]] Answer<FolderListing> PeekFolder(const std::string& path) { return folders_.Peek(path); }
  /// What was in a folder when it was last listed, however long ago. Makes no request.
  [[nodiscard]] Answer<FolderListing> RecallFolder(const std::string& path) { return folders_.Recall(path); }

  /// The newest iteration of a document.
  /// @param folder  path of its folder, with the closing "/"
  /// @param name    its name in a path
  [[nodiscard]] Answer<Iteration> Document(const std::string& folder, const std::string& name);
  [[nodiscard]] Answer<Iteration> PeekDocument(const std::string& folder, const std::string& name);

  /// The same for a program that is about to read it: of a working copy, which others may store into, the length is
  /// what the server tells now.
  [[nodiscard]] Answer<Iteration> DocumentToRead(const std::string& folder, const std::string& name);

  /// The UID of a document.
  [[nodiscard]] Answer<std::string> UidOf(const std::string& folder, const std::string& name);

  /// The UID of a document as the server tells it now. While the server is away, that is an error, whatever was
  /// known before.
  /// @return ENOENT when its folder does not list it
  [[nodiscard]] Answer<std::string> UidNow(const std::string& folder, const std::string& name);

  /// Gives the UID by which a document is read, for that by which it is found.
  using ReadBy = std::function<std::string(const std::string& uid)>;
  /// Has documents read by other UIDs from now on. To be called before the first question.
  void SetReadBy(ReadBy readBy) { readBy_ = std::move(readBy); }

  /// The iteration of a UID.
  [[nodiscard]] Answer<Iteration> IterationOf(const std::string& uid) {
    return IterationOf(uid, std::nullopt);
  }

  /// All versions of a document, the newest first; where the server doesn't list them, the newest alone. The
  /// ids are UIDs.
  [[nodiscard]] Answer<std::vector<DocumentVersion>> VersionsOf(const std::string& folder,
                                                                const std::string& name);

  /// Lets everything be asked anew that can change.
  void Outdate();
  /// The same for one document and its folder.
  void Outdate(const std::string& folder, const std::string& name);
  /// Lets it be asked anew which iteration of each document is the newest.
  void OutdateIterations();
  /// The same after a document was stored.
  /// @param stored  its length, and when it was written
  void OutdateStored(const std::string& folder, const std::string& name, const Facts& stored);

 private:
  [[nodiscard]] Answer<Iteration> IterationOf(const std::string& uid, const std::optional<Facts>& stored);
  [[nodiscard]] Answer<Iteration> WithTime(const std::string& path, const Answer<Iteration>& found);
  [[nodiscard]] Answer<FolderListing> AskForFolder(const std::string& path);
  [[nodiscard]] Answer<std::string> AskForUid(const std::string& path);
  [[nodiscard]] std::string UidByListing(const std::string& folder, const std::string& name);
  [[nodiscard]] bool IsListingWorthIt(const std::string& folder);
  [[nodiscard]] std::string UidOfId(const std::string& id);
  void LearnUidForm(const std::string& uid);
  template <typename Value, typename Question>
  [[nodiscard]] Answer<Value> Asked(const std::string& what, Question question);

  const bool keepsListings_;
  FactsFile& facts_;
  ContentCache& cache_;
  const std::function<void(const std::string&)> report_;
  ReadBy readBy_ = [](const std::string& uid) { return uid; };
  ServerPresence presence_;
  KeptAnswers<FolderListing> folders_;
  KeptAnswers<FolderVersions> versions_;
  KeptAnswers<std::string> uids_;
  KeptAnswers<Iteration> iterations_;
  KeptAnswers<Iteration> workingCopies_;
  DocumentTimes times_;

  std::mutex mutex_;                          // guards what follows
  std::string uidStart_;                      // what comes before the id in every UID of the server
  std::map<std::string, std::size_t> asked_;  // how many documents of a folder were asked for by their path
};

}  // namespace vtdirect_mount
