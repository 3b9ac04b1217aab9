#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulator/wire/request_head.h"
#include "simulator/wire/request_log.h"

namespace vantry_sim {

/// One request as it is remembered. Secrets were replaced before it was.
struct RememberedRequest {
  std::uint64_t id = 0;  ///< counts up from 1 in the order in which heads arrived
  bool done = false;     ///< the answer went out, or the connection ended; what follows it is set then
  std::string door;      ///< "main", "pages" or "uploads"
  std::string client;    ///< address and port
  std::uint64_t connection = 0;  ///< the same for all requests of one connection
  std::string method;
  std::string target;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;            ///< JSON; empty for any other body
  std::uint64_t bodySize = 0;  ///< as it came
  std::string user;
  std::chrono::system_clock::time_point start;
  std::chrono::microseconds duration{0};
  int status = 0;
  std::uint64_t answerBytes = 0;
  std::uint64_t fault = 0;  ///< id of the rule that met it; 0: none did
};

/// Which of the remembered requests are meant.
struct RequestFilter {
  std::string method = "*";   ///< "*" for any
  std::string pattern = "*";  ///< glob on the target as it is shown
  std::uint64_t since = 0;    ///< only those with a greater id
  std::optional<int> status = std::nullopt;
  bool arrived = false;  ///< also those that have no answer yet
};

/// The last requests, in memory, within bounds of number and size. Any thread.
class RequestHistory {
 public:
  /// A head has arrived. @param request all but `id`. @return the id
  std::uint64_t Begin(RememberedRequest request);

  /// The body of a request has been read.
  void SetBody(std::uint64_t id, std::string shown, std::uint64_t size);

  /// The answer has gone out.
  void Finish(std::uint64_t id, const Exchange& exchange, std::uint64_t fault);

  /// The same for a body that is shown without its secrets. What a JSON text says takes many times the memory
  /// of its bytes, so bodies are looked at one at a time.
  void ShowBody(std::uint64_t id, std::string_view contentType, std::string_view body);

  /// Those that the filter means, the oldest first.
  [[nodiscard]] std::vector<RememberedRequest> Find(const RequestFilter& filter) const;

  /// Waits until `count` requests that the filter means are there, or the time is over, or the server ends.
  /// @return what was found. @param[out] mark the id of the latest request of that moment, if it is wanted
  std::vector<RememberedRequest> Wait(const RequestFilter& filter, std::size_t count,
                                      std::chrono::milliseconds time, std::uint64_t* mark = nullptr);

  /// The id of the latest request; 0 before the first. Those that come later have greater ones.
  [[nodiscard]] std::uint64_t Mark() const;

  /// Forgets all. Ids go on.
  void Clear();

  /// Ends every wait, now and from now on.
  void EndWaits();

 private:
  [[nodiscard]] RememberedRequest* Entry(std::uint64_t id);
  [[nodiscard]] std::vector<RememberedRequest> FindLocked(const RequestFilter& filter) const;
  void Trim();

  std::mutex showing_;  ///< held while one body is looked at
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<RememberedRequest> requests_;
  std::uint64_t lastId_ = 0;
  std::size_t size_ = 0;  ///< bytes of all that is kept, roughly
  bool ending_ = false;
};

}  // namespace vantry_sim
