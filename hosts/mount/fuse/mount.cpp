#include "hosts/mount/fuse/mount.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

#include "hosts/mount/names/shown_name.h"

namespace vtdirect_mount {
namespace {

// A slow document must not hold up those who read others.
constexpr std::size_t fetchesAtOnce = 32;
constexpr std::chrono::milliseconds patience{500};
// A store that is cut off has to be settled by "vtdirect recover", so it may take its time.
constexpr std::chrono::minutes storePatience{5};

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
      questions_(settings_.parallel) {
  if (!settings_.write) return;
  Mounted mounted;
  mounted.uidOf = [this](const std::string& address) { return UidOf(address); };
  mounted.uidNow = [this](const std::string& address) { return UidNow(address); };
  mounted.uidStored = [this](const std::string& address) {
    // Who asked before the store may be waiting for an older answer.
    const auto uid = UidNow(address);
    return uid.value == nullptr ? std::string() : *uid.value;
  };
  mounted.outdate = [this](const std::string& address) {
    const auto [folder, name] = PartsOfPath(address);
    tree_.Outdate(folder, name);
  };
  mounted.outdateStored = [this](const std::string& address, const Facts& stored) {
    const auto [folder, name] = PartsOfPath(address);
    tree_.OutdateStored(folder, name, stored);
  };
  mounted.log = [&log](const std::string& text) { log.Write(text); };
  Writing::Settings writing{settings_.scratch, settings_.autoCheckout, settings_.command,
                            settings_.startDirectory};
  writing_ = std::make_unique<Writing>(std::move(writing), std::move(mounted));
  tree_.SetReadBy([this](const std::string& uid) { return writing_->ReadBy(uid); });
}

// A document that is not in its folder's listing is not there, whatever else has its name.
Answer<std::string> Mount::UidOf(const std::string& address) {
  LearnCheckouts();
  const auto [folder, name] = PartsOfPath(address);
  const auto listing = tree_.Folder(folder);
  if (listing.value == nullptr) return {listing.error};
  if (!listing.value->HasDocument(name)) return {ENOENT};
  return tree_.UidOf(folder, name);
}

Answer<std::string> Mount::UidNow(const std::string& address) {
  const auto [folder, name] = PartsOfPath(address);
  return tree_.UidNow(folder, name);
}

std::shared_ptr<LocalFile> Mount::LocalAt(const Node& node) {
  if (writing_ == nullptr || node.kind != NodeKind::Document) return nullptr;
  return writing_->overlay().Find(node.address);
}

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

// What is being written to on this machine is not always what the kernel keeps: it appends where it believes the end.
// To let go what another program is just reading, the kernel would wait for that.
fuse_file_info Mount::Keep(std::uint64_t node, const Handle& handle) {
  fuse_file_info file = {};
  const auto use = pages_.NoteOpened(node, handle->key());
  file.direct_io = use == KernelPages::Use::Bypass ? 1 : 0;
  const bool isKept = use == KernelPages::Use::Keep && handle->local() == nullptr;
  file.keep_cache = isKept || use == KernelPages::Use::Bypass ? 1 : 0;
  file.fh = handles_.Keep(handle);
  return file;
}

void Mount::Drop(std::uint64_t node, const Handle& handle) {
  pages_.NoteClosed(node, handle->key());
  handles_.Drop(reinterpret_cast<std::uint64_t>(handle.get()));
}

bool Mount::IsAsBefore(std::uint64_t node, const std::string& text) {
  const std::lock_guard lock(mutex_);
  return std::exchange(seen_[node], text) == text;
}

void Mount::ForgetNode(std::uint64_t node) {
  pages_.Forget(node);
  const std::lock_guard lock(mutex_);
  seen_.erase(node);
}

void Mount::LetKernelForget(std::uint64_t node, Kept kept) {
  fuse_lowlevel_notify_inval_inode(session_, node, kept == Kept::Attributes ? -1 : 0, 0);
}

void Mount::LetKernelForgetLater(std::uint64_t node) {
  questions_.Post([this, node] { LetKernelForget(node, Kept::AttributesAndContent); });
}

void Mount::Refresh() {
  tree_.Outdate();
  if (writing_ != nullptr) {
    writing_->overlay().BringBack();
    writing_->RetryNow();
  }
  LetKernelForget(NodeTable::rootNumber, Kept::AttributesAndContent);
  for (const auto& node : nodes_.All()) {
    // Of a document the attributes alone: whether the kernel may keep its bytes is told when it is opened.
    const bool isFile = node->kind == NodeKind::Document || node->kind == NodeKind::VersionFile;
    LetKernelForget(node->number, isFile ? Kept::Attributes : Kept::AttributesAndContent);
    fuse_lowlevel_notify_inval_entry(session_, node->parent, node->name.c_str(), node->name.size());
  }
  pages_.ForgetAll();
  {
    const std::lock_guard lock(mutex_);
    seen_.clear();
  }
  ++refreshes_;
}

bool Mount::Stop() {
  const bool haveFetchesEnded = fetches_.StopWithin(patience);
  const bool haveStoresEnded = writing_ == nullptr || writing_->StopWithin(storePatience);
  if (!questions_.StopWithin(patience) || !haveFetchesEnded || !haveStoresEnded) return false;
  // What libfuse has given to a thread that answered a read goes when the thread ends, if its session is still there.
  fetches_.Stop();
  questions_.Stop();
  return true;
}

}  // namespace vtdirect_mount
