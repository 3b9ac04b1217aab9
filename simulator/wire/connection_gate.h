#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "simulator/wire/connection_stream.h"
#include "simulator/wire/worker_threads.h"

namespace vantry_sim {

/// What serves the requests of one port. Any thread, several at once.
class RequestServer {
 public:
  virtual ~RequestServer() = default;

  /// Serves the request whose head has been collected. @return whether the connection may go on
  virtual bool Serve(ConnectionStream& stream) = 0;

  /// Refuses a head that isn't served, without waiting, and says so where requests are logged.
  virtual void Refuse(ConnectionStream& stream, int status) = 0;

  /// Makes what carries the bytes of a new connection. @param socket taken over
  virtual std::unique_ptr<Transport> Carry(int socket) = 0;
};

/// How many connections there may be, and how long they may keep others waiting.
struct GateLimits {
  std::size_t connections = 16384;
  std::size_t connectionsOfAClient = 12288;  ///< by its address
  std::size_t atWork = 2048;                 ///< requests that are served at one time
  std::size_t atWorkForAClient = 1536;
  std::chrono::milliseconds idle{300'000};    ///< silence between two requests
  std::chrono::milliseconds head{30'000};     ///< from the first byte of a head to its last
  std::chrono::milliseconds prepare{10'000};  ///< for what comes before the first request, such as TLS
  std::chrono::milliseconds body{60'000};     ///< for a body, plus a second for each KiB that came of it
  /// How long a client may keep an answer waiting in all, plus a second for each 64 KiB that it took.
  std::chrono::milliseconds answer{600'000};
};

/// Limits for so many connections, or for as many as the process may have descriptors. Asks the system for
/// as many as it grants, and leaves some for files.
GateLimits LimitsFor(std::size_t connections);

/// Holds all connections of all ports. Those that wait for a request cost a descriptor and no thread; a head
/// is collected here, and only a whole one is given to a thread. So neither silent clients nor half-sent
/// heads keep a request of another client waiting.
///
/// Where there is no room for a new connection, the one that has been silent for longest goes.
class ConnectionGate {
 public:
  explicit ConnectionGate(GateLimits limits);
  ConnectionGate(const ConnectionGate&) = delete;
  ConnectionGate& operator=(const ConnectionGate&) = delete;
  ~ConnectionGate();

  /// Adds a port. To be called before Run. @param socket bound and listening; taken over. @param server
  /// outlives the gate
  void Listen(int socket, RequestServer& server);

  /// Serves until Stop; returns when the last connection has ended.
  void Run();

  /// Ends Run, from any thread, also before it has begun. Answers that are under way are finished, unless
  /// they take longer than a few seconds; silent connections are closed.
  void Stop();

 private:
  enum class State { Preparing, Idle, Head, Ready, Working };
  struct Connection;
  using Queue = std::list<Connection*>;
  struct Listener {
    int socket = -1;
    RequestServer* server = nullptr;
  };
  struct Client {
    std::size_t connections = 0;
    std::size_t atWork = 0;
  };
  /// Connections that are to be closed once the lock is free, since closing may take a moment.
  using Closing = std::vector<std::unique_ptr<Connection>>;

  void HandleEvent(std::uint64_t id);
  void Accept(Listener& listener);
  void Admit(int socket, RequestServer& server);
  void Advance(Connection& connection, Closing& closing);
  void Park(Connection& connection, State state, Moved wait);
  void Unpark(Connection& connection);
  Queue* QueueOf(State state);
  bool MakeRoom(const std::string& client, Closing& closing);
  Connection* LongestSilent(const std::string& client);
  void Dispatch(Connection& connection);
  void StartReady();
  void Work(Connection& connection);
  bool ServeAll(Connection& connection);
  void Release(Connection& connection, Closing& closing);
  void Expire(Closing& closing);
  void ExpireQueue(State state, std::chrono::milliseconds limit, Closing& closing);
  void CloseAll();
  void Wake() const;

  GateLimits limits_;
  int poll_ = -1;
  int wake_ = -1;
  std::vector<Listener> listeners_;

  std::mutex mutex_;
  std::condition_variable changed_;
  bool stopping_ = false;
  std::uint64_t lastId_ = 0;
  std::unordered_map<std::uint64_t, std::unique_ptr<Connection>> connections_;
  std::unordered_map<std::string, Client> clients_;
  Queue preparing_;
  Queue idle_;
  Queue heads_;
  std::deque<Connection*> ready_;  ///< heads that wait for a thread
  std::size_t atWork_ = 0;
  WorkerThreads workers_;
};

}  // namespace vantry_sim
