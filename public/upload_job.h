#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "public/path_resolution.h"
#include "public/vt_direct_manager.h"
#include "server/file_server.h"

/// An upload between its two halves: what can be refused at once, and the transfer.
namespace lxservices::cms_interface {

/// Owns copies of all its texts, so that a task outlives the arguments.
struct UploadJob {
  std::shared_ptr<FileServer> server;
  DocumentKind kind = DocumentKind::Fenlet;
  std::string id;            ///< the object to iterate; empty for a new document
  std::string relativePath;  ///< where a new document goes; empty when `id` is not
  std::string mainPath;
  std::string viewablePath;
  std::string vcsPath;
  std::string language;
  std::map<std::string, std::string> dependencies;  ///< child name to object id
  bool checkIn = false;                             ///< a check-in is to follow a store
  bool checkedOut = false;  ///< the object has a working copy, so a store is called for
};

/// What an upload is asked for. Nothing is owned.
struct UploadRequest {
  VtDirectManager::FileType kind = VtDirectManager::FileTypeFenlet;
  const char* path = nullptr;
  const char* mainPath = nullptr;
  const char* viewablePath = nullptr;                               ///< may be null
  const char* language = nullptr;                                   ///< may be null
  const std::map<std::string, std::string>* sourceLinks = nullptr;  ///< null for none
  bool checkIn = false;
  bool autoCheckIn = false;  ///< a temporary checkout is checked in without being asked for
};

/// Settles everything that can be refused at once. Makes requests, on this thread.
/// @param status  called with StatusConnectFailed when the server does not answer, with what was tried when
///                there is no local file to store, and else not at all
/// @return nothing, traced, when there is nothing to transfer
[[nodiscard]] std::optional<UploadJob> PrepareUpload(const UploadRequest& request,
                                                     const VtDirectManager::StatusCallback& status);

/// Transfers a job, on this thread. `status` gets exactly one call.
/// @throws std::invalid_argument, std::out_of_range  for a stream id that is no number, with no call of
///         `status`
[[nodiscard]] bool RunUploadJob(const UploadJob& job, const VtDirectManager::StatusCallback& status,
                                const VtDirectManager::ProgressCallback& progress);

/// Hands a copy of a job to the task runner. The task throws what RunUploadJob throws.
/// @return whether the runner took it
[[nodiscard]] bool PostUploadJob(const UploadJob& job, const VtDirectManager::StatusCallback& status,
                                 const VtDirectManager::ProgressCallback& progress);

}  // namespace lxservices::cms_interface
