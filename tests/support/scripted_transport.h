#pragma once

#include <deque>
#include <functional>
#include <iosfwd>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/http.h"

namespace vtdirect_test {

/// One request as the library sent it, as a test compares it.
struct SentRequest {
  std::string server;   ///< the URL that the connection was made for
  std::string line;     ///< method and URI: "GET servlet/OrvetGW"
  std::string headers;  ///< the header text, joined by CR LF
  std::optional<std::string> body;
  friend bool operator==(const SentRequest&, const SentRequest&) = default;
};
void PrintTo(const SentRequest& request, std::ostream* out);

/// What the script answers.
struct Answer {
  /// Told of a failed exchange too, as a platform tells 413 of a body that is too large; 0 leaves it alone.
  int status = 200;
  /// Of a failed exchange: what came before it broke off; nothing at all when it is empty.
  std::string body;
  du::http::ErrorCode error = du::http::ErrorCode::Done;
  /// Called before the answer goes out, as a server's demand for authentication; the value is how often
  /// reauthenticate is asked.
  int demands = 0;
  /// Called when the whole answer has been delivered: for what happens to local files after it.
  std::function<void()> afterwards = {};
  /// Told to the library before the exchange ends, as a platform explains a failure.
  du::http::FailureReport found = {};
};

/// Takes the place of the platform's HTTP part: answers from a script, in order, and keeps what was sent. One
/// lives at a time. A request after the end of the script finds no connection; one whose body cannot be read
/// to its end fails with the body's code, and gets no answer.
///
/// Requests may come from any number of threads, and from inside the callbacks of others. What was sent is
/// read when they are done.
class ScriptedTransport {
 public:
  /// What a server answers to a request. Called on the thread of the request, which may wait in it for what
  /// other threads do.
  using Router = std::function<Answer(const SentRequest& request)>;

  ScriptedTransport();
  ~ScriptedTransport();
  ScriptedTransport(const ScriptedTransport&) = delete;
  ScriptedTransport& operator=(const ScriptedTransport&) = delete;

  /// Adds to the script.
  ScriptedTransport& Then(int status, std::string body = {});
  ScriptedTransport& Then(Answer answer);
  /// The exchange fails with this code.
  ScriptedTransport& ThenFail(du::http::ErrorCode error);

  /// From now on each request is answered by what it asks for, and not from the script.
  void AnswerBy(Router router);

  /// From now on called by each ConnectURI with its URL, on the thread that connects.
  void OnConnect(std::function<void(const std::string& url)> action);

  /// The next `count` calls of ConnectURI give nothing.
  void RefuseConnections(int count);

  [[nodiscard]] const std::vector<SentRequest>& requests() const { return requests_; }
  /// Method and URI of all requests, in order.
  [[nodiscard]] std::vector<std::string> lines() const;
  /// Answers of the script that nobody asked for.
  [[nodiscard]] std::size_t unanswered() const { return script_.size(); }
  /// URLs that ConnectURI was called with, in order.
  [[nodiscard]] const std::vector<std::string>& connections() const { return connections_; }
  /// The client marks that requests carried, in order.
  [[nodiscard]] const std::vector<std::string>& clientMarks() const { return clientMarks_; }
  /// What reauthenticate gave, in order.
  [[nodiscard]] const std::vector<bool>& authResults() const { return authResults_; }
  void ClearRequests();

  // For the two entry points.
  std::unique_ptr<du::http::Connection> Connect(const char* uri);
  du::http::ErrorCode Exchange(const std::string& server, const du::http::CommonAuth& auth,
                               const du::http::Request& request, int* httpStatus);

 private:
  /// Keeps what was sent, and gives the answer to it; nothing when no answer is left.
  [[nodiscard]] std::optional<Answer> AnswerTo(const SentRequest& sent, const char* clientMark, bool isWhole);

  std::mutex mutex_;  ///< guards all members; held while none of the library's code runs
  Router router_;
  std::function<void(const std::string& url)> onConnect_;
  std::deque<Answer> script_;
  std::vector<SentRequest> requests_;
  std::vector<std::string> connections_;
  std::vector<std::string> clientMarks_;
  std::vector<bool> authResults_;
  int refusedConnections_ = 0;
};

}  // namespace vtdirect_test
