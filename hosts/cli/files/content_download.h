#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/result.h"
#include "hosts/cli/files/fetch_record.h"
#include "hosts/cli/files/target_file.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/texts/output.h"

namespace vtdirect_cli {

/// One download of an object's content, from what was asked for to its result.
struct Download {
  std::string address;
  std::string source;         ///< what is fetched in its place; empty for the address itself
  std::string uidToGoOnWith;  ///< what is reported in place of the source's UID; empty for that
  Record described;           ///< members of the JSON object in front of those that every download has
  Target target;
  bool noClobber = false;
  bool force = false;
  /// Told how many bytes have come, in place of the line of progress; may be empty.
  std::function<void(std::size_t received)> progress = {};
  std::string version;           ///< of the content, when it is known without a question
  bool isOfWorkingCopy = false;  ///< what is fetched is a working copy's content
  bool isDryRun = false;
};

/// The options of a command that downloads: "output", "no-clobber", "force" and "dry-run".
[[nodiscard]] std::vector<OptionRow> DownloadOptions();

/// The members of the JSON object that every download has.
[[nodiscard]] std::vector<MemberRow> DownloadMembers();

/// Whether the options fit together. Makes no request.
[[nodiscard]] std::optional<Failure> CheckDownloadOptions(Host& host, const Arguments& arguments);

/// A download of the content of an address, with the options and where it goes by them. Makes requests when the
/// target is named after the object and the address holds no name. A file that would be lost is a failure.
/// @param place  the file that it goes to whatever -o says; empty for what -o says
[[nodiscard]] Result<Download> SettleDownload(Host& host, const Arguments& arguments,
                                              const std::string& address, const std::string& place = {});

/// Records that the server has the bytes of a local file, so that a later download may replace it, with the
/// version that the server tells. What goes wrong is a warning. Makes requests when the record has no version.
/// @param record  with all but file, and perhaps version
void RecordFetch(Host& host, const std::string& file, FetchRecord record);

/// Local files whose bytes are in a working copy have them in this iteration from now on, if it has them: the working
/// copy was checked in. Others may have stored something else in it meanwhile. Makes requests if there are such files.
/// @param sha256  of the iteration's bytes; they are fetched unless it is known
void KeepContentOf(Host& host, const std::string& workingCopy, const std::string& iteration,
                   const std::string& sha256 = {});

/// Forgets that a working copy has the bytes of local files: it has got other ones. Makes no request.
void ForgetContentOf(const std::string& workingCopy);

/// Downloads, puts the file in its place when it is whole, and reports that. A dry run looks whether the object is
/// there, and says what would become of the file.
/// @return the size of the content, or why it is not there; 0 of a dry run
[[nodiscard]] Result<std::uint64_t> PerformDownload(Host& host, const Download& download);

/// The same, and reports a failure too.
ExitCode RunDownload(Host& host, const Download& download);

}  // namespace vtdirect_cli
