#pragma once

/// The words of those steps that hosts tell apart. public/outcome.h promises them under the same names.
namespace lxservices::cms_interface {

inline constexpr const char* stepAskWhetherServerAnswers = "ask whether the server answers";
inline constexpr const char* stepCheckServer = "check the server";
inline constexpr const char* stepAskForVersion = "ask the server for its version";
inline constexpr const char* stepFetchNonce = "fetch the nonce";
inline constexpr const char* stepDownload = "download";
inline constexpr const char* stepDownloadContent = "download the content";
inline constexpr const char* stepAskForUploadPlace = "ask for a place to upload to";
inline constexpr const char* stepUploadContents = "upload the contents";
inline constexpr const char* stepRegisterApplication = "register the application version";
inline constexpr const char* stepListVersions = "list the versions";
inline constexpr const char* stepCreateWorkspace = "create a workspace";
inline constexpr const char* stepDeleteWorkspace = "delete a workspace";

}  // namespace lxservices::cms_interface
