#pragma once

#include <sys/stat.h>

#include <chrono>
#include <cstddef>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "hosts/mount/fuse/fuse_api.h"
#include "hosts/mount/fuse/open_document.h"
#include "hosts/mount/fuse/open_handles.h"
#include "hosts/mount/fuse/pending_request.h"
#include "hosts/mount/log.h"
#include "hosts/mount/requests/content_fetches.h"
#include "hosts/mount/requests/task_pool.h"
#include "hosts/mount/tree/kernel_pages.h"
#include "hosts/mount/tree/lookahead.h"
#include "hosts/mount/tree/node_table.h"
#include "hosts/mount/tree/server_tree.h"
#include "hosts/mount/writing/kept_checkouts.h"
#include "hosts/mount/writing/writing.h"

namespace vtdirect_mount {

/// What a mount is asked for.
struct MountSettings {
  std::string address;    ///< path of the directory on the server, with its closing "/"
  std::string directory;  ///< where it is mounted
  std::chrono::seconds refresh{10};
  std::size_t parallel = 8;          ///< questions for folders and attributes at one time
  bool noPreview = false;            ///< contents are not given to programs that make thumbnails
  bool write = false;                ///< documents can be written to
  ScratchNames scratch;              ///< names of files that stay on this machine
  bool autoCheckout = false;         ///< a document is checked out when it is first written to
  std::vector<std::string> command;  ///< vtdirect, with the options of every call
  std::string startDirectory;        ///< where the program was started
};

/// What the kernel keeps of a file.
enum class Kept {
  Attributes,
  AttributesAndContent,
};

/// All that the operations work with: the tree, the contents, the nodes that the kernel knows. Any thread.
class Mount {
 public:
  Mount(MountSettings settings, FactsFile& facts, ContentCache& cache, Log& log);

  [[nodiscard]] const MountSettings& settings() const { return settings_; }
  [[nodiscard]] NodeTable& nodes() { return nodes_; }
  [[nodiscard]] ServerTree& tree() { return tree_; }
  [[nodiscard]] ContentFetches& fetches() { return fetches_; }
  [[nodiscard]] OpenHandles& handles() { return handles_; }
  /// Keeps an open file until it is dropped.
  /// @return what the kernel is told of it
  [[nodiscard]] fuse_file_info Keep(std::uint64_t node, const Handle& handle);
  void Drop(std::uint64_t node, const Handle& handle);
  [[nodiscard]] Log& log() { return log_; }
  /// How long the kernel may keep what it is told of a name. Not long, since that comes on top of the time of
  /// refreshing; long enough for a program that asks for a name several times.
  [[nodiscard]] double seconds() const { return settings_.refresh.count() == 0 ? 0 : 1; }
  /// What is the same for all files of the mount: who owns them, and when it began.
  [[nodiscard]] const struct stat& pattern() const { return pattern_; }
  /// How often everything was outdated by Refresh.
  [[nodiscard]] std::size_t refreshes() const { return refreshes_; }

  /// What programs write; null where the tree can only be read.
  [[nodiscard]] Writing* writing() { return writing_.get(); }
  [[nodiscard]] const Writing* writing() const { return writing_.get(); }
  /// Has the newest iterations asked for anew when vtdirect has checked something out or in meanwhile.
  void LearnCheckouts() {
    if (checkouts_.HaveChanged()) tree_.OutdateIterations();
  }
  /// The file of this machine that lies over a document; null without one.
  [[nodiscard]] std::shared_ptr<LocalFile> LocalAt(const Node& node);

  /// Has a request answered by another thread, which may make requests.
  void Ask(fuse_req_t request, std::function<void(const std::shared_ptr<PendingRequest>&)> task);
  /// Asks for what a program is about to ask next.
  void LookAhead(const std::string& folder, const FolderListing& listing, const FolderEntry& entry);

  /// Whether this is the first answer to the kernel, which settles how the two speak.
  [[nodiscard]] bool IsFirstAnswer() { return !hasAnswered_.exchange(true); }
  /// Whether the kernel has seen the directory with this text before, and with no other one since. Notes the text.
  [[nodiscard]] bool IsAsBefore(std::uint64_t node, const std::string& text);
  /// A number that no other open of a file has.
  [[nodiscard]] std::uint64_t NextOpen() { return ++opens_; }
  /// Forgets what was noted of a node.
  void ForgetNode(std::uint64_t node);

  /// The session in which the kernel speaks with this; null before it begins.
  void SetSession(fuse_session* session) { session_ = session; }
  /// Lets the kernel forget what it keeps of a file. May wait for the kernel, which may wait for the answer to a write;
  /// so the content is not to be forgotten by the threads that take in requests.
  void LetKernelForget(std::uint64_t node, Kept kept);
  /// Has another thread let the kernel forget attributes and content of a file.
  void LetKernelForgetLater(std::uint64_t node);

  /// Lets the server be asked anew for all that can change, and the kernel forget it.
  void Refresh();

  /// Ends what is under way, and waits for it a moment.
  /// @return whether all has ended; if not, a thread waits for a silent server, and the process must end
  ///         without destroying this
  [[nodiscard]] bool Stop();

 private:
  [[nodiscard]] Answer<std::string> UidOf(const std::string& address);
  [[nodiscard]] Answer<std::string> UidNow(const std::string& address);

  const MountSettings settings_;
  Log& log_;
  struct stat pattern_ = {};
  fuse_session* session_ = nullptr;
  NodeTable nodes_;
  ServerTree tree_;
  KeptCheckouts checkouts_;
  ContentFetches fetches_;
  Lookahead lookahead_;
  std::mutex mutex_;  // guards what was seen
  std::map<std::uint64_t, std::string> seen_;
  KernelPages pages_;
  std::atomic<std::uint64_t> opens_{0};
  std::atomic<std::size_t> refreshes_{0};
  std::atomic<bool> hasAnswered_{false};
  TaskPool questions_;
  std::unique_ptr<Writing> writing_;
  OpenHandles handles_;
};

}  // namespace vtdirect_mount
