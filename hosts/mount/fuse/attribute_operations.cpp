#include <unistd.h>
#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <cerrno>
#include <map>

#include "hosts/mount/fuse/entries.h"
#include "hosts/mount/fuse/operations.h"
#include "hosts/mount/names/shown_name.h"
#include "hosts/mount/requests/failure_errno.h"

namespace vtdirect_mount {
namespace {

constexpr std::string_view prefix = "user.vantry.";
constexpr std::string_view askedAnew = "asked_anew";  // in no list of names: "cp -a" would read it

[[nodiscard]] bool IsFile(const Node& node) {
  return node.kind == NodeKind::Document || node.kind == NodeKind::VersionFile;
}

// What a program other than this one needs to know to reach the mount: its process, and how often it was
// refreshed.
[[nodiscard]] Answer<std::string> MountText(const Mount& mount) {
  return Found(std::to_string(getpid()) + " " + std::to_string(mount.refreshes()));
}

[[nodiscard]] Answer<std::string> DetailOf(const std::string& uid, VtDirectManager::VtDetails key) {
  const VtDirectManager::Outcome outcome;
  std::map<VtDirectManager::VtDetails, std::string> details{{key, ""}};
  if (!VtDirectManager::ReadDetails(uid.c_str(), details))
    return {ErrorOf(outcome), nullptr, WordsOf(outcome)};
  return Found(details[key]);
}

[[nodiscard]] Answer<std::string> VersionOf(const std::string& uid) {
  const VtDirectManager::Outcome outcome;
  std::string current;
  std::string latest;
  if (VtDirectManager::GetStatus(uid.c_str(), current, latest, nullptr) < 0)
    return {ErrorOf(outcome), nullptr, WordsOf(outcome)};
  return Found(current);
}

// Who has a document checked out, and whether that is the user, who may then store into it.
struct Holder {
  std::string name;
  bool isUser = false;
};

[[nodiscard]] Answer<Holder> HolderOf(const std::string& uid) {
  const VtDirectManager::Outcome outcome;
  Holder holder;
  const auto status = VtDirectManager::GetCheckoutStatus(uid.c_str(), &holder.name);
  if (status == VtDirectManager::CheckoutStatusFailed) return {ErrorOf(outcome), nullptr, WordsOf(outcome)};
  holder.isUser = status == VtDirectManager::CheckoutByUserUnrecorded ||
                  status == VtDirectManager::CheckoutInTempWorkspace ||
                  status == VtDirectManager::CheckoutInWorkspace;
  return Found(std::move(holder));
}

[[nodiscard]] Answer<std::string> HolderName(const std::string& uid) {
  const auto holder = HolderOf(uid);
  if (holder.value == nullptr) return {holder.error, nullptr, holder.words};
  return Found(holder.value->name);
}

[[nodiscard]] Answer<std::string> WritableWord(const std::string& uid) {
  const auto holder = HolderOf(uid);
  if (holder.value == nullptr) return {holder.error, nullptr, holder.words};
  return Found(std::string(holder.value->isUser ? "yes" : "no"));
}

[[nodiscard]] Answer<std::string> FileText(const std::string& uid, std::string_view name) {
  if (name == "version") return VersionOf(uid);
  if (name == "number") return DetailOf(uid, VtDirectManager::DetailNumber);
  if (name == "name") return DetailOf(uid, VtDirectManager::DetailName);
  if (name == "checked_out_by") return HolderName(uid);
  if (name == "writable") return WritableWord(uid);
  const std::string whole = VtDirectManager::GetUID(uid.c_str());
  return Found(whole.empty() ? uid : whole);
}

// For vtdirect, which reads it after it has changed a document: what the document is now shows before its user looks.
[[nodiscard]] Answer<std::string> AskedAnew(Mount& mount, const Node& document) {
  const auto [folder, name] = PartsOfPath(document.address);
  mount.tree().Outdate(folder, name);
  const auto iteration = IterationToRead(mount, document);
  mount.LetKernelForget(document.number, Kept::Attributes);
  if (iteration.value == nullptr) return {iteration.error};
  return Found(std::string("yes"));
}

[[nodiscard]] Answer<std::string> TextOf(Mount& mount, const Node& node, const std::string& name) {
  if (name == "address") return Found(node.address);
  if (name == askedAnew) return AskedAnew(mount, node);
  const auto iteration = IterationOf(mount, node, Effort::Ask);
  if (iteration.value == nullptr) return {iteration.error};
  return FileText(iteration.value->uid, name);
}

void ReplyText(fuse_req_t request, const Answer<std::string>& answer, std::size_t size) {
  if (answer.value == nullptr) {
    fuse_reply_err(request, answer.error);
  } else if (size == 0) {
    fuse_reply_xattr(request, answer.value->size());
  } else if (size < answer.value->size()) {
    fuse_reply_err(request, ERANGE);
  } else {
    fuse_reply_buf(request, answer.value->data(), answer.value->size());
  }
}

// Without the prefix; empty for what no node of this kind has. Programs ask for many others, as for access
// lists, and those make no request.
[[nodiscard]] std::string KnownName(const Node& node, std::string_view name) {
  if (!name.starts_with(prefix)) return {};
  name.remove_prefix(prefix.size());
  if (name == "address" || name == "mount") return std::string(name);
  if (!IsFile(node)) return {};
  if (name == askedAnew && node.kind == NodeKind::Document) return std::string(name);
  for (const std::string_view known : {"uid", "version", "number", "name", "checked_out_by", "writable"}) {
    if (name == known) return std::string(name);
  }
  return {};
}

[[nodiscard]] std::string NamesOf(const Node& node) {
  std::string names = std::string(prefix) + "address" + '\0';
  if (!IsFile(node)) return names;
  for (const std::string_view name : {"uid", "version", "number", "name", "checked_out_by", "writable"}) {
    names.append(prefix).append(name) += '\0';
  }
  return names;
}

}  // namespace

void OnGetExtended(fuse_req_t request, fuse_ino_t number, const char* name, std::size_t size) {
  Mount& mount = MountOf(request);
  const auto node = mount.nodes().Find(number);
  const std::string known = node == nullptr ? "" : KnownName(*node, name);
  if (known.empty()) {
    fuse_reply_err(request, node == nullptr ? ESTALE : ENODATA);
  } else if (known == "mount") {
    ReplyText(request, MountText(mount), size);
  } else {
    mount.Ask(request, [&mount, node, known, size](const auto& pending) {
      const auto answer = TextOf(mount, *node, known);
      pending->Answer([&](fuse_req_t asked) { ReplyText(asked, answer, size); });
    });
  }
}

void OnListExtended(fuse_req_t request, fuse_ino_t number, std::size_t size) {
  const auto node = MountOf(request).nodes().Find(number);
  if (node == nullptr) {
    fuse_reply_err(request, ESTALE);
    return;
  }
  ReplyText(request, Found(NamesOf(*node)), size);
}

}  // namespace vtdirect_mount
