#include "hosts/mount/writing/scratch_names.h"

#include <fnmatch.h>

#include <algorithm>

namespace vtdirect_mount {
namespace {

// What mkstemp puts in the place of six X.
const std::string sixRandom = "[A-Za-z0-9][A-Za-z0-9][A-Za-z0-9][A-Za-z0-9][A-Za-z0-9][A-Za-z0-9]";

[[nodiscard]] bool Matches(const std::string& pattern, const std::string& text) {
  return fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
}

}  // namespace

ScratchNames::ScratchNames()
    : patterns_{
          {"*~", ""},  // backups of vim, emacs and nano
          {".*.sw[a-p]", ""},
          {".*.sw[a-p]x", ""},
          {".*.swx", ""},    // swap files of vim and nano
          {"4913", "*vi*"},  // by which vim tries whether it may make files
          {"4913", "ex"},
          {"#*#", ""},
          {".#*", ""},  // emacs: automatic saves and locks
          {".~lock.*#", ""},
          {"lu*.tmp", ""},  // LibreOffice: locks, and contents on their way
          {"sed" + sixRandom, "sed"},
          {".?*." + sixRandom, "rsync"},
          {"*.o" + sixRandom, "patch"},
          {"*.orig", "patch"},
          {"*.rej", "patch"},
          {"XX" + sixRandom, "perl"},
          {"*." + sixRandom, "kate"},
          {"*." + sixRandom, "kwrite"},
          {".goutputstream-" + sixRandom, ""},  // programs of the GNOME desktop
          {"*.tmp", ""},
          {".DS_Store", ""},
          {".Trash", ""},
          {".Trash-[0-9]*", ""},  // other programs
      } {}

bool ScratchNames::HasNewOf(const std::string& name, const std::string& program) const {
  return std::any_of(patterns_.begin(), patterns_.end(), [&](const Pattern& pattern) {
    const bool isByIt = pattern.programs.empty() || Matches(pattern.programs, program);
    return isByIt && Matches(pattern.names, name);
  });
}

}  // namespace vtdirect_mount
