#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "hosts/mount/fuse/entries.h"
#include "hosts/mount/fuse/operations.h"
#include "hosts/mount/names/shown_name.h"

namespace vtdirect_mount {
namespace {

// An open directory: its lines as they were when it was opened.
struct OpenDirectory {
  Answer<std::vector<DirectoryLine>> lines;
};

// A name that is not there is kept by the kernel too, since programs look for ".git", "autorun.inf" and their
// like over and over.
void ReplyNoEntry(fuse_req_t request, const Mount& mount) {
  fuse_entry_param entry = {};
  entry.entry_timeout = mount.seconds();
  fuse_reply_entry(request, &entry);
}

void ReplyEntry(fuse_req_t request, Mount& mount, const LookedUp& found) {
  const auto node = mount.nodes().Enter(found.node);
  fuse_entry_param entry = {};
  entry.ino = node->number;
  entry.attr = found.attributes;
  entry.attr.st_ino = node->number;
  entry.attr_timeout = entry.entry_timeout = mount.seconds();
  if (fuse_reply_entry(request, &entry) != 0) mount.nodes().Forget(node->number, 1);
}

void ReplyLookedUp(fuse_req_t request, Mount& mount, const Answer<LookedUp>& answer) {
  if (answer.value != nullptr) return ReplyEntry(request, mount, *answer.value);
  if (answer.error == ENOENT) return ReplyNoEntry(request, mount);
  fuse_reply_err(request, answer.error);
}

void ReplyAttributes(fuse_req_t request, const Mount& mount, std::uint64_t node,
                     const Answer<struct stat>& answer) {
  if (answer.value == nullptr) {
    fuse_reply_err(request, answer.error);
    return;
  }
  struct stat attributes = *answer.value;
  attributes.st_ino = node;
  fuse_reply_attr(request, &attributes, mount.seconds());
}

// The kernel keeps what it was told of a directory as long as that is the same.
[[nodiscard]] std::string MarkOf(const Answer<std::vector<DirectoryLine>>& lines) {
  std::size_t mark = lines.value->size();
  for (const DirectoryLine& line : *lines.value) mark = mark * 31 + std::hash<std::string>{}(line.name);
  return std::to_string(mark);
}

void ReplyOpenDirectory(fuse_req_t request, Mount& mount, const Node& node,
                        Answer<std::vector<DirectoryLine>> lines) {
  if (lines.value == nullptr) {
    fuse_reply_err(request, lines.error);
    return;
  }
  fuse_file_info file = {};
  file.cache_readdir = 1;
  file.keep_cache = mount.IsAsBefore(node.number, MarkOf(lines)) ? 1 : 0;
  file.fh = mount.handles().Keep(std::make_shared<OpenDirectory>(OpenDirectory{std::move(lines)}));
  if (fuse_reply_open(request, &file) != 0) mount.handles().Drop(file.fh);
}

void ForgetNode(Mount& mount, fuse_ino_t node, std::uint64_t times) {
  mount.nodes().Forget(node, times);
  if (mount.nodes().Find(node) == nullptr) mount.ForgetNode(node);
}

}  // namespace

void OnLookup(fuse_req_t request, fuse_ino_t parent, const char* name) {
  Mount& mount = MountOf(request);
  const auto node = mount.nodes().Find(parent);
  if (node == nullptr) {
    fuse_reply_err(request, ESTALE);
    return;
  }
  // The kernel takes names of up to 1,024 bytes, and looks for each before it makes or renames a file.
  if (std::strlen(name) > longestName) {
    fuse_reply_err(request, ENAMETOOLONG);
    return;
  }
  const auto known = LookUp(mount, *node, name, Effort::Known);
  if (known.error != EAGAIN) return ReplyLookedUp(request, mount, known);
  mount.Ask(request, [&mount, node, name = std::string(name)](const auto& pending) {
    const auto answer = LookUp(mount, *node, name, Effort::Ask);
    pending->Answer([&](fuse_req_t asked) { ReplyLookedUp(asked, mount, answer); });
  });
}

void OnForget(fuse_req_t request, fuse_ino_t node, std::uint64_t times) {
  ForgetNode(MountOf(request), node, times);
  fuse_reply_none(request);
}

void OnForgetMulti(fuse_req_t request, std::size_t count, fuse_forget_data* forgets) {
  for (std::size_t index = 0; index < count; ++index) {
    ForgetNode(MountOf(request), forgets[index].ino, forgets[index].nlookup);
  }
  fuse_reply_none(request);
}

void OnGetAttributes(fuse_req_t request, fuse_ino_t number, fuse_file_info* /*file*/) {
  Mount& mount = MountOf(request);
  const auto node = mount.nodes().Find(number);
  if (node == nullptr) {
    fuse_reply_err(request, ESTALE);
    return;
  }
  const auto known = AttributesOf(mount, *node, Effort::Known);
  if (known.error != EAGAIN) return ReplyAttributes(request, mount, number, known);
  mount.Ask(request, [&mount, node](const auto& pending) {
    const auto answer = AttributesOf(mount, *node, Effort::Ask);
    pending->Answer([&](fuse_req_t asked) { ReplyAttributes(asked, mount, node->number, answer); });
  });
}

void OnOpenDirectory(fuse_req_t request, fuse_ino_t number, fuse_file_info* /*file*/) {
  Mount& mount = MountOf(request);
  const auto node = mount.nodes().Find(number);
  if (node == nullptr) {
    fuse_reply_err(request, ESTALE);
    return;
  }
  mount.Ask(request, [&mount, node](const auto& pending) {
    auto lines = LinesOf(mount, *node);
    pending->Answer([&](fuse_req_t asked) { ReplyOpenDirectory(asked, mount, *node, std::move(lines)); });
  });
}

void OnReadDirectory(fuse_req_t request, fuse_ino_t /*node*/, std::size_t size, off_t offset,
                     fuse_file_info* file) {
  const auto& lines = *reinterpret_cast<const OpenDirectory*>(file->fh)->lines.value;
  std::vector<char> buffer(size);
  std::size_t used = 0;
  for (auto index = static_cast<std::size_t>(offset); index < lines.size(); ++index) {
    struct stat attributes = {};
    attributes.st_ino = lines[index].number;
    attributes.st_mode = lines[index].isFolder ? S_IFDIR : S_IFREG;
    const std::size_t length =
        fuse_add_direntry(request, buffer.data() + used, size - used, lines[index].name.c_str(), &attributes,
                          static_cast<off_t>(index + 1));
    if (length > size - used) break;
    used += length;
  }
  fuse_reply_buf(request, buffer.data(), used);
}

void OnReleaseDirectory(fuse_req_t request, fuse_ino_t /*node*/, fuse_file_info* file) {
  MountOf(request).handles().Drop(file->fh);
  fuse_reply_err(request, 0);
}

}  // namespace vtdirect_mount
