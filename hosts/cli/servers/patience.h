#pragma once

#include <vtdirect/platform/http_observer.h>
#include <vtdirect/platform/http_settings.h>

#include <cstdint>
#include <mutex>
#include <optional>

namespace vtdirect_cli {

/// How long the exchanges of a command wait for a server that is silent.
///
/// A limit on the whole time would end a long download, so silence alone is limited. Each question has a minute,
/// and a change two; one that brings a file has longer, by the file's size. A server that has let such a time
/// pass gets five seconds for each further exchange until one goes well, so that a command which asks it a dozen
/// questions ends after one minute and not after twelve. A time that the user has named holds for all of it.
///
/// The limits are those of the process: one object at a time. Any thread.
class Patience {
 public:
  Patience() = default;
  Patience(const Patience&) = delete;
  Patience& operator=(const Patience&) = delete;

  /// Sets the limits of the transport.
  /// @param seconds  what the user has named for every wait; nothing for the usual limits
  /// @param connectSeconds  longest time to set up a connection
  void Begin(std::optional<long> seconds, long connectSeconds);

  /// To be told of each exchange that has ended.
  void Note(const du::http::ObservedExchange& exchange);

  /// While it lives, a file of so many bytes is sent, with which the server may have work for a while.
  class WhileSending {
   public:
    WhileSending(Patience& patience, std::uint64_t bytes);
    ~WhileSending();
    WhileSending(const WhileSending&) = delete;
    WhileSending& operator=(const WhileSending&) = delete;

   private:
    Patience& patience_;
  };

 private:
  void SendFile(std::uint64_t bytes);
  void Apply();

  std::mutex mutex_;
  std::optional<long> seconds_;
  long connectSeconds_ = 0;
  std::uint64_t fileBytes_ = 0;
  bool wasSilent_ = false;
};

}  // namespace vtdirect_cli
