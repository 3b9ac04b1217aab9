#include "hosts/cli/listing.h"

namespace vtdirect_cli {
namespace {

// The library's listings have no other way to be ended than an exception of the callback, and let it through.
struct EndOfInterest {};

void Receive(VtDirectManager::DirEntryExt& entry, void* user) {
  if (!(*static_cast<const EntryFunction*>(user))(entry)) throw EndOfInterest();
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

ListingEnd ListByHandle(const std::string& path, std::uint32_t flags, const EntryFunction& receive) {
  const VtDirectManager::DirHandle handle = VtDirectManager::OpenDir(path.c_str());
  if (!handle) return ListingEnd::Unreachable;
  return Run([&] {
    return VtDirectManager::ReadDir(handle, Receive, Handed(receive),
                                    static_cast<VtDirectManager::ReadDirFlags>(flags));
  });
}

}  // namespace vtdirect_cli
