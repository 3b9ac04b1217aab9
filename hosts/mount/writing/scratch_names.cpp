#include "hosts/mount/writing/scratch_names.h"

#include <fnmatch.h>

#include <algorithm>

namespace vtdirect_mount {

ScratchNames::ScratchNames()
    : patterns_{
          "*~",  // backups of vim, emacs and nano
          ".*.sw[a-p]",
          ".*.sw[a-p]x",
          ".*.swx",  // swap files of vim and nano
          "4913",    // by which vim tries whether it may make files
          "#*#",
          ".#*",  // emacs: automatic saves and locks
          ".~lock.*#",
          "lu*.tmp",           // LibreOffice: locks, and contents on their way
          "sed??????",         // sed -i
          ".*.??????",         // rsync
          ".goutputstream-*",  // programs of the GNOME desktop
          "*.tmp",
          ".nfs*",
          ".DS_Store",
          ".Trash*",  // other programs
      } {}

bool ScratchNames::Has(const std::string& name) const {
  return std::any_of(patterns_.begin(), patterns_.end(), [&name](const std::string& pattern) {
    return fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
  });
}

}  // namespace vtdirect_mount
