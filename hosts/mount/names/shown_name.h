#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace vtdirect_mount {

/// The folder that holds the versions of its neighbours. Programs that walk a tree never meet it, since no
/// listing shows it.
inline constexpr std::string_view versionsFolder = ".versions";

/// The most bytes that a name in a directory can have.
inline constexpr std::size_t longestName = 255;

/// The name under which a program sees a document of a listing.
///
/// People know a document by its plain name, so that is shown: "a: b?.txt" for "a%3a b%3f.txt". A name that
/// no file can have stays in its escaped form, with every "%" of its own escaped too: one that holds "/", and
/// one that would read like an escaped name. So two documents never share a name. What would be too long for
/// a file's name is cut, and told apart by a hash.
/// @param entry  as the library lists it, in the form of a path
[[nodiscard]] std::string ShownName(std::string_view entry);

/// The same for a folder or a version, which is listed as it is, with nothing escaped.
[[nodiscard]] std::string ShownFolderName(std::string_view entry);

/// The name in a path for a name that a program gives to something new: ShownName the other way round.
[[nodiscard]] std::string NameInPath(std::string_view shown);

/// The folder of a document's path, with its closing "/", and the name.
[[nodiscard]] std::pair<std::string, std::string> PartsOfPath(const std::string& path);

}  // namespace vtdirect_mount
