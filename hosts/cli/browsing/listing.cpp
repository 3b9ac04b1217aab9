#include "hosts/cli/browsing/listing.h"

namespace vtdirect_cli {
namespace {

// The library's listings have no other way to be ended than an exception of the callback, and let it through.
struct EndOfInterest {};

void Receive(VtDirectManager::DirEntryExt& entry, void* user) {
  if (!(*static_cast<const EntryFunction*>(user))(entry)) throw EndOfInterest();
}

void ReceiveWalked(VtDirectManager::DirEntryExt& entry, const VtDirectManager::WalkedDir& folder,
                   void* user) {
  if (!(*static_cast<const WalkedEntryFunction*>(user))(entry, folder)) throw EndOfInterest();
}

template <typename Listing>
[[nodiscard]] ListingEnd Run(Listing list) {
  try {
    return list() ? ListingEnd::Whole : ListingEnd::Broken;
  } catch (const EndOfInterest&) {
    return ListingEnd::Stopped;
  }
}

[[nodiscard]] void* Handed(const EntryFunction& receive) {
  return const_cast<EntryFunction*>(&receive);
}

}  // namespace

ListingEnd ListPath(const std::string& path, std::uint32_t flags, const EntryFunction& receive) {
  return Run([&] {
    return VtDirectManager::ReadDirExt(path.c_str(), Receive, Handed(receive),
                                       static_cast<VtDirectManager::ReadDirFlags>(flags));
  });
}

ListingEnd ListWalked(const VtDirectManager::WalkedDir& directory, std::uint32_t flags,
                      const WalkedEntryFunction& receive) {
  if (directory == nullptr) return ListingEnd::Unreachable;
  return Run([&] {
    return VtDirectManager::ReadWalkedDir(directory, ReceiveWalked,
                                          const_cast<WalkedEntryFunction*>(&receive),
                                          static_cast<VtDirectManager::ReadDirFlags>(flags));
  });
}

}  // namespace vtdirect_cli
