#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/work_folder/comparison.h"

namespace vtdirect_cli {

/// Told how many bytes of a content have come, on the thread that fetches it.
using FetchProgress = std::function<void(std::size_t received)>;

/// What became of a file that the server has in another form.
struct FetchResult {
  enum class End {
    Fetched,  ///< the server's bytes are in its place
    Known,    ///< it had the server's bytes already, and is kept as such now
    Empty,    ///< the document has no content yet, and so there is no file
    Left,     ///< it was changed here, or did not come from the server, and is as it was
    Failed
  };
  End end = End::Failed;
  std::optional<Failure> failure;  ///< for Left and Failed
  FolderFile file;                 ///< for Fetched and Known
};

/// Brings a file of a work folder to the newest version, unless that would cost anything that was made here.
/// What is replaced is compared with what is kept of it, byte for byte, right before. Makes requests; several
/// threads may fetch different files.
/// @param wanted  with its document
/// @param progress  told how many bytes have come; may be empty
[[nodiscard]] FetchResult FetchFile(WorkFolder& folder, const Comparison& wanted,
                                    const FetchProgress& progress = {});

/// When a file that differs from what is kept of it has the bytes of the server's newest version, keeps it as
/// that. Makes a request, and two more when the sizes agree.
/// @return the end Known, or Left with no failure when the bytes differ, or Failed
[[nodiscard]] FetchResult RecogniseFile(WorkFolder& folder, const Comparison& wanted,
                                        const FetchProgress& progress = {});

/// A content that has arrived and is in no place yet.
struct Arrival {
  std::unique_ptr<DurableFile> pending;
  FolderFile file;
  std::optional<Failure> failure;
  bool hasNoContent = false;  ///< the failure is that the document has no content yet
};

/// Fetches a version into a new file of a directory. Makes requests.
/// @param directory  on the file system of the work folder, when the content is to be put in its place
[[nodiscard]] Arrival FetchVersion(const WorkFolder& folder, const std::string& directory,
                                   const RemoteDocument& document, const FetchProgress& progress = {});

/// Puts a content in its place, and keeps that it is there.
/// @param before  what was at the place: nothing, or the file that is to be replaced
/// @return why it is not there, and the place is then as it was. That it could not be kept is no failure: it
///         was announced, and the next command keeps it.
[[nodiscard]] std::optional<Failure> PutInPlace(WorkFolder& folder, Arrival& arrival,
                                                const std::optional<struct stat>& before);

}  // namespace vtdirect_cli
