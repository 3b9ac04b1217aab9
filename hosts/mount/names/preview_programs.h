#pragma once

#include <string_view>

namespace vtdirect_mount {

/// Whether a program makes thumbnails of files: one that desktops start by themselves for each file that is
/// shown.
/// @param name  as the kernel keeps it, cut to 15 bytes
[[nodiscard]] bool MakesPreviews(std::string_view name);

}  // namespace vtdirect_mount
