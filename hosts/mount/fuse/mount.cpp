#include "hosts/mount/fuse/mount.h"

#include <unistd.h>

#include <utility>

namespace vtdirect_mount {
namespace {

// A slow document must not hold up those who read others.
constexpr std::size_t fetchesAtOnce = 32;
constexpr std::chrono::milliseconds patience{500};

[[nodiscard]] struct stat PatternOfNow() {
  struct stat pattern = {};
  pattern.st_uid = getuid();
  pattern.st_gid = getgid();
  pattern.st_nlink = 1;
  pattern.st_blksize = 4096;
  pattern.st_mtim.tv_sec = std::time(nullptr);
  pattern.st_atim = pattern.st_ctim = pattern.st_mtim;
  return pattern;
}

}  // namespace

Mount::Mount(MountSettings settings, FactsFile& facts, ContentCache& cache, Log& log)
    : settings_(std::move(settings)),
      log_(log),
      pattern_(PatternOfNow()),
      nodes_(settings_.address),
      tree_(settings_.refresh, facts, cache, [&log](const std::string& text) { log.Write(text); }),
      fetches_(cache, fetchesAtOnce, [&log](const std::string& text) { log.Write(text); }),
      lookahead_(2 * settings_.parallel),
      questions_(settings_.parallel) {}

void Mount::Ask(fuse_req_t request, std::function<void(const std::shared_ptr<PendingRequest>&)> task) {
  questions_.Post([pending = PendingRequest::Of(request), task = std::move(task)] {
    if (!pending->IsAnswered()) task(pending);
  });
}

void Mount::LookAhead(const std::string& folder, const FolderListing& listing, const FolderEntry& entry) {
  for (const std::string& name : lookahead_.Note(folder, listing, entry)) {
    questions_.PostLater([this, folder, name] { static_cast<void>(tree_.Document(folder, name)); });
  }
}

bool Mount::IsAsBefore(std::uint64_t node, const std::string& text) {
  const std::lock_guard lock(mutex_);
  return std::exchange(seen_[node], text) == text;
}

void Mount::ForgetNode(std::uint64_t node) {
  const std::lock_guard lock(mutex_);
  seen_.erase(node);
}

void Mount::Refresh(fuse_session* session) {
  tree_.Outdate();
  fuse_lowlevel_notify_inval_inode(session, NodeTable::rootNumber, 0, 0);
  for (const auto& node : nodes_.All()) {
    // Of a document the attributes alone: whether the kernel may keep its bytes is told when it is opened.
    const bool isFile = node->kind == NodeKind::Document || node->kind == NodeKind::VersionFile;
    fuse_lowlevel_notify_inval_inode(session, node->number, isFile ? -1 : 0, 0);
    fuse_lowlevel_notify_inval_entry(session, node->parent, node->name.c_str(), node->name.size());
  }
  {
    const std::lock_guard lock(mutex_);
    seen_.clear();
  }
  ++refreshes_;
}

bool Mount::Stop() {
  const bool haveFetchesEnded = fetches_.StopWithin(patience);
  return questions_.StopWithin(patience) && haveFetchesEnded;
}

}  // namespace vtdirect_mount
