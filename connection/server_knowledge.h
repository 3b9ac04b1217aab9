#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "connection/service_flags.h"

/// What has been learned of a server, in one place. Nothing here makes a request.
namespace lxservices::cms_interface::vantry {

/// What a server says of its documents' features.
struct ServerFeatures {
  bool separatedSources = false;
  bool vcsInfo = false;
  friend bool operator==(const ServerFeatures&, const ServerFeatures&) = default;
};

/// Takes over the groups of flags that are not settled yet. One that is settled stays: operations have gone
/// by it.
void MergeServices(ServiceFlags& known, const ServiceFlags& learned);

/// Takes over each "yes". A "yes" stays, whatever is learned later: the "no" of a server that failed says
/// nothing about its features.
void MergeFeatures(std::optional<ServerFeatures>& known, const ServerFeatures& learned);

/// Takes over a "yes", and a "no" unless "yes" is known, for the same reason.
void MergeAnswer(std::optional<bool>& known, bool learned);

/// The facts that all operations on one server share. Any thread reads and writes them at any time. Two
/// threads that miss a fact both ask the server, without a lock, and what both learned is merged here.
class ServerKnowledge {
 public:
  /// The nonce's header line; empty until one has been fetched.
  [[nodiscard]] std::string NonceLine() const;
  /// Keeps a nonce's header line, the last one that was fetched; an empty line says that a fetch failed and
  /// changes nothing.
  /// @return the line that is known now
  std::string LearnNonceLine(const std::string& line);

  /// The authoring application version that was negotiated; empty until then.
  [[nodiscard]] std::string AuthAppVersion() const;
  /// Keeps a negotiated version, the last one.
  void LearnAuthAppVersion(const std::string& version);

  [[nodiscard]] ServiceFlags Services() const;
  /// Merges and gives what is known now.
  ServiceFlags LearnServices(const ServiceFlags& learned);

  /// Nothing until the features have been asked for, whatever came of it.
  [[nodiscard]] std::optional<ServerFeatures> Features() const;
  /// Merges and gives what is known now.
  ServerFeatures LearnFeatures(const ServerFeatures& learned);

  /// Whether the server gets a translation service; nothing until that has been asked.
  [[nodiscard]] std::optional<bool> Translates() const;
  /// Merges and gives what is known now.
  bool LearnTranslates(bool learned);

 private:
  mutable std::mutex mutex_;
  std::string nonceLine_;
  std::string authAppVersion_;
  ServiceFlags services_;
  std::optional<ServerFeatures> features_;
  std::optional<bool> translates_;
};

}  // namespace lxservices::cms_interface::vantry
