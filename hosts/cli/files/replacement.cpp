#include "hosts/cli/files/replacement.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/files/fetch_record.h"
#include "hosts/cli/work_folder/work_folder.h"

namespace vtdirect_cli {
namespace {

constexpr const char* nextStep =
    "; nothing was fetched; --force replaces it and loses what is in it, -o writes to another file";

// The administrator may write everything, but that a file is protected says that nobody should.
[[nodiscard]] bool IsWriteProtected(const Target& target) {
  return (target.before->st_mode & 0222U) == 0 || access(target.path.c_str(), W_OK) != 0;
}

// A file that comes by another way than a pull would count as changed here.
[[nodiscard]] Failure RefusalOfWorkFile(const std::string& path) {
  return {ExitCode::LocalFile, path + " is a file of a work folder, and is not replaced; nothing was fetched",
          "\"vtdirect pull\" brings it up to date, " + CommandToType("revert", path) +
              " puts it back as it came, and -o writes to another file"};
}

}  // namespace

std::optional<Failure> RefusalOfReplacement(const Target& target, bool force) {
  if (target.kind != Target::Kind::File || !target.before) return std::nullopt;
  if (IsWriteProtected(target)) {
    return Failure{ExitCode::LocalFile,
                   target.path +
                       " is write-protected, and is not replaced; nothing was fetched; allow writing "
                       "to it (chmod u+w), or give another file with -o"};
  }
  if (force) return std::nullopt;
  if (IsPlaceOfWorkFile(target.path)) return RefusalOfWorkFile(target.path);
  const auto record = FetchRecords().Find(target.path);
  if (!record) {
    return Failure{ExitCode::LocalFile,
                   target.path +
                       " is there and was not saved by vtdirect, so that its content may be nowhere "
                       "else" +
                       nextStep};
  }
  if (IsAsRecorded(target.path, *record)) return std::nullopt;
  const std::string version = record->version.empty() ? "" : " as version " + record->version;
  return Failure{ExitCode::LocalFile, target.path + " was changed since vtdirect saved it" + version +
                                          " of " + record->address + nextStep};
}

std::optional<Failure> RefusalToReplaceCopy(const Target& target, bool force, const std::string& fetched) {
  if (target.kind != Target::Kind::File || !target.before || force) return std::nullopt;
  const auto record = FetchRecords().Find(target.path);
  if (!record || record->copyUse == CopyUse::None) return std::nullopt;
  if (AreSameUid(ByOwnId(record->uid), ByOwnId(fetched))) return std::nullopt;
  return Failure{ExitCode::LocalFile, target.path + " has the content of the working copy " + record->uid +
                                          ", which is not what is fetched, so that its content may be "
                                          "nowhere else" +
                                          nextStep};
}

std::optional<Failure> RefusalToLoseContent(const Target& target, bool force, const std::string& sha256) {
  if (target.kind != Target::Kind::File || !target.before || force) return std::nullopt;
  const auto record = FetchRecords().Find(target.path);
  if (!record || record->copyUse == CopyUse::None || record->sha256 == sha256) return std::nullopt;
  return Failure{
      ExitCode::LocalFile,
      target.path + " has a content of the working copy " + record->uid +
          " that was replaced there by another one, so that it may be nowhere else; the file is as it "
          "was; --force replaces it and loses what is in it, -o writes to another file"};
}

}  // namespace vtdirect_cli
