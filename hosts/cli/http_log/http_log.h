#pragma once

#include <vtdirect/platform/http_observer.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace vtdirect_cli {

/// What was seen of the exchanges of this process.
struct SeenExchanges {
  std::vector<du::http::ObservedExchange> exchanges;  ///< in the order in which they ended
  std::size_t leftOut = 0;                            ///< exchanges that there was no room for, after those
};

/// Sees every exchange of the process while it lives, as many as fit into its bounds. One at a time.
class HttpLog {
 public:
  /// @param also  who is told of them too, and goes on to be told when this object has gone
  explicit HttpLog(du::http::ExchangeObserver also);
  ~HttpLog();
  HttpLog(const HttpLog&) = delete;
  HttpLog& operator=(const HttpLog&) = delete;

  /// A copy of what was seen so far. Any thread.
  [[nodiscard]] SeenExchanges Seen() const;

 private:
  struct State;
  const du::http::ExchangeObserver also_;
  std::shared_ptr<State> state_;  // an exchange that is under way reports later than the end of this object
};

}  // namespace vtdirect_cli
