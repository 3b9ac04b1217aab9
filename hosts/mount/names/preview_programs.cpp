#include "hosts/mount/names/preview_programs.h"

#include <algorithm>
#include <array>

namespace vtdirect_mount {

bool MakesPreviews(std::string_view name) {
  constexpr std::array<std::string_view, 8> programs = {
      "tumblerd",        "thumbnail.so",    "kioslave5",       "kf6-kio-worker",
      "evince-thumbnai", "totem-video-thu", "ffmpegthumbnail", "tracker-extract"};
  return name.find("thumbnail") != std::string_view::npos ||
         std::find(programs.begin(), programs.end(), name) != programs.end();
}

}  // namespace vtdirect_mount
