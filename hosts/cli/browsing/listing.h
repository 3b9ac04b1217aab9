#pragma once

#include <vtdirect/vt_direct_manager.h>

#include <cstdint>
#include <functional>
#include <string>

namespace vtdirect_cli {

/// Takes one entry of a listing, which is valid during the call only. False ends the listing.
using EntryFunction = std::function<bool(const VtDirectManager::DirEntryExt& entry)>;

/// A text of an entry; a server may leave any of them out, and then it is null.
[[nodiscard]] inline std::string TextOrEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

/// How a listing ended.
enum class ListingEnd {
  Whole,        ///< every entry was delivered
  Stopped,      ///< the receiver has ended it
  Broken,       ///< it failed, perhaps after some entries
  Unreachable,  ///< there is no such directory, or it can't be reached; nothing was delivered
};

/// Lists a directory by its path. Each entry is handed on as it arrives and none is kept.
/// @param path   with its closing "/"
/// @param flags  bits of ReadDirFlags
[[nodiscard]] ListingEnd ListPath(const std::string& path, std::uint32_t flags, const EntryFunction& receive);

/// Takes one entry of a walk, and with a folder the directory that it is.
using WalkedEntryFunction =
    std::function<bool(const VtDirectManager::DirEntryExt& entry, const VtDirectManager::WalkedDir& folder)>;

/// Lists a directory of a walk, each entry as it arrives.
/// @param directory  empty gives Unreachable
[[nodiscard]] ListingEnd ListWalked(const VtDirectManager::WalkedDir& directory, std::uint32_t flags,
                                    const WalkedEntryFunction& receive);

}  // namespace vtdirect_cli
