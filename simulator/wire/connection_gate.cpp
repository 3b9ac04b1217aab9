#include "simulator/wire/connection_gate.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace vantry_sim {
namespace {

/// Ids of connections count on from here; what lies below are the wake-up and the listeners.
constexpr std::uint64_t firstConnection = 1000;
constexpr std::uint64_t wakeUp = 0;
/// How often limits of time are looked at.
constexpr int tickMilliseconds = 100;
/// How long a stop waits for answers that are under way.
constexpr auto grace = std::chrono::seconds(3);
/// While few requests are served, a thread waits this long for a client's next one: handing it over costs
/// more than serving it.
constexpr int briefMilliseconds = 50;
constexpr std::size_t few = 128;

/// Descriptors for the database, the files that are read and written, and the ports.
constexpr rlim_t spareDescriptors = 2500;

using Clock = std::chrono::steady_clock;

std::uint32_t EventsOf(Moved wait) {
  return (wait == Moved::WaitWritable ? EPOLLOUT : EPOLLIN) | EPOLLONESHOT;
}

}  // namespace

GateLimits LimitsFor(std::size_t connections) {
  rlimit descriptors{};
  if (getrlimit(RLIMIT_NOFILE, &descriptors) == 0) {
    descriptors.rlim_cur = descriptors.rlim_max;
    setrlimit(RLIMIT_NOFILE, &descriptors);
    getrlimit(RLIMIT_NOFILE, &descriptors);
    const rlim_t spare = std::min<rlim_t>(spareDescriptors, descriptors.rlim_cur / 2);
    connections = static_cast<std::size_t>(std::min<rlim_t>(connections, descriptors.rlim_cur - spare));
  }
  GateLimits limits;
  limits.connections = std::max<std::size_t>(connections, 4);
  limits.connectionsOfAClient = limits.connections / 4 * 3;
  return limits;
}

/// A connection and its state. The gate's thread has it in every state but Working.
struct ConnectionGate::Connection {
  Connection(std::uint64_t number, std::unique_ptr<Transport> transport, RequestServer& owner,
             const GateLimits& limits)
      : id(number),
        stream(std::move(transport), number, limits.body, limits.answer),
        server(owner),
        client(stream.remoteAddress()) {}

  std::uint64_t id;
  ConnectionStream stream;
  RequestServer& server;
  std::string client;
  State state = State::Preparing;
  bool registered = false;
  Clock::time_point since = Clock::now();
  Queue::iterator place;
};

ConnectionGate::ConnectionGate(GateLimits limits)
    : limits_(limits),
      poll_(epoll_create1(EPOLL_CLOEXEC)),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      lastId_(firstConnection) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.u64 = wakeUp;
  if (poll_ < 0 || wake_ < 0 || epoll_ctl(poll_, EPOLL_CTL_ADD, wake_, &event) != 0)
    throw std::runtime_error("cannot watch connections: " + std::string(std::strerror(errno)));
}

ConnectionGate::~ConnectionGate() {
  for (const Listener& listener : listeners_) {
    if (listener.socket >= 0) close(listener.socket);
  }
  close(wake_);
  close(poll_);
}

void ConnectionGate::Listen(int socket, RequestServer& server) {
  listeners_.push_back({socket, &server});
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.u64 = listeners_.size();
  if (epoll_ctl(poll_, EPOLL_CTL_ADD, socket, &event) != 0)
    throw std::runtime_error("cannot watch a port: " + std::string(std::strerror(errno)));
}

void ConnectionGate::Run() {
  std::array<epoll_event, 256> events{};
  for (;;) {
    const int count = epoll_wait(poll_, events.data(), static_cast<int>(events.size()), tickMilliseconds);
    for (int i = 0; i < count; ++i) HandleEvent(events[static_cast<std::size_t>(i)].data.u64);
    Closing closing;
    const std::lock_guard lock(mutex_);
    if (stopping_) break;
    Expire(closing);
  }
  CloseAll();
}

void ConnectionGate::Stop() {
  const std::lock_guard lock(mutex_);
  stopping_ = true;
  Wake();
}

void ConnectionGate::Wake() const {
  const std::uint64_t one = 1;
  static_cast<void>(!write(wake_, &one, sizeof one));
}

void ConnectionGate::HandleEvent(std::uint64_t id) {
  if (id == wakeUp) {
    std::uint64_t ignored = 0;
    static_cast<void>(!read(wake_, &ignored, sizeof ignored));
    return;
  }
  if (id < firstConnection) return Accept(listeners_[id - 1]);
  Closing closing;
  const std::lock_guard lock(mutex_);
  // One that was closed for another event of the same round is no longer there.
  const auto found = connections_.find(id);
  if (found == connections_.end() || QueueOf(found->second->state) == nullptr) return;
  Advance(*found->second, closing);
}

void ConnectionGate::Accept(Listener& listener) {
  for (;;) {
    const int socket = accept4(listener.socket, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket >= 0) {
      Admit(socket, *listener.server);
      continue;
    }
    if (errno == EINTR || errno == ECONNABORTED) continue;
    if (errno != EMFILE && errno != ENFILE) return;
    Closing closing;
    const std::lock_guard lock(mutex_);
    if (!MakeRoom({}, closing)) return;
  }
}

void ConnectionGate::Admit(int socket, RequestServer& server) {
  auto connection = std::make_unique<Connection>(++lastId_, server.Carry(socket), server, limits_);
  Closing closing;
  const std::lock_guard lock(mutex_);
  const auto client = clients_.find(connection->client);
  const std::size_t ofClient = client == clients_.end() ? 0 : client->second.connections;
  if ((ofClient >= limits_.connectionsOfAClient && !MakeRoom(connection->client, closing)) ||
      (connections_.size() >= limits_.connections && !MakeRoom({}, closing))) {
    server.Refuse(connection->stream, 503);
    closing.push_back(std::move(connection));
    return;
  }
  ++clients_[connection->client].connections;
  Connection& kept = *connection;
  connections_.emplace(kept.id, std::move(connection));
  preparing_.push_back(&kept);
  kept.place = std::prev(preparing_.end());
  Advance(kept, closing);
}

/// Takes a connection that waits as far as it gets without waiting.
void ConnectionGate::Advance(Connection& connection, Closing& closing) {
  if (connection.state == State::Preparing) {
    const Moved moved = connection.stream.transport().Prepare();
    if (moved == Moved::End) return Release(connection, closing);
    if (moved != Moved::Done) return Park(connection, State::Preparing, moved);
  }
  Moved wait = Moved::WaitReadable;
  switch (connection.stream.Collect(wait)) {
    case ConnectionStream::Arrival::Nothing:
      return Park(connection, State::Idle, wait);
    case ConnectionStream::Arrival::Part:
      return Park(connection, State::Head, wait);
    case ConnectionStream::Arrival::Head:
      Unpark(connection);
      return Dispatch(connection);
    case ConnectionStream::Arrival::TooLong:
      connection.server.Refuse(connection.stream, 431);
      break;
    case ConnectionStream::Arrival::Closed:
      break;
  }
  Release(connection, closing);
}

ConnectionGate::Queue* ConnectionGate::QueueOf(State state) {
  if (state == State::Preparing) return &preparing_;
  if (state == State::Idle) return &idle_;
  return state == State::Head ? &heads_ : nullptr;
}

/// Lets a connection wait for its next bytes. The time of a head and of a preparation counts from its begin.
void ConnectionGate::Park(Connection& connection, State state, Moved wait) {
  if (connection.state != state) {
    Unpark(connection);
    connection.state = state;
    connection.since = Clock::now();
    Queue& queue = *QueueOf(state);
    queue.push_back(&connection);
    connection.place = std::prev(queue.end());
  }
  if (state == State::Idle) connection.stream.ReleaseMemory();
  epoll_event event{};
  event.events = EventsOf(wait);
  event.data.u64 = connection.id;
  epoll_ctl(poll_, connection.registered ? EPOLL_CTL_MOD : EPOLL_CTL_ADD, connection.stream.socket(), &event);
  connection.registered = true;
}

void ConnectionGate::Unpark(Connection& connection) {
  if (Queue* queue = QueueOf(connection.state)) queue->erase(connection.place);
  connection.state = State::Ready;
}

/// Closes the connection that has been silent for longest. @param client whose it must be; empty: anybody's.
/// @return false where none waits
bool ConnectionGate::MakeRoom(const std::string& client, Closing& closing) {
  Connection* const silent = LongestSilent(client);
  if (silent == nullptr) return false;
  Release(*silent, closing);
  return true;
}

/// Half-sent heads go before connections that have served somebody.
ConnectionGate::Connection* ConnectionGate::LongestSilent(const std::string& client) {
  for (Queue* queue : {&preparing_, &heads_, &idle_}) {
    for (Connection* connection : *queue) {
      if (client.empty() || connection->client == client) return connection;
    }
  }
  return nullptr;
}

/// Gives a whole head to a thread, now or when there is one to spare.
void ConnectionGate::Dispatch(Connection& connection) {
  ready_.push_back(&connection);
  StartReady();
}

void ConnectionGate::StartReady() {
  for (auto next = ready_.begin(); next != ready_.end() && atWork_ < limits_.atWork;) {
    Connection& connection = **next;
    Client& client = clients_[connection.client];
    if (client.atWork >= limits_.atWorkForAClient) {
      ++next;
      continue;
    }
    next = ready_.erase(next);
    connection.state = State::Working;
    ++atWork_;
    ++client.atWork;
    workers_.Run([this, &connection] { Work(connection); });
  }
}

/// Serves on a thread of its own, and gives the connection back.
void ConnectionGate::Work(Connection& connection) {
  const bool goesOn = ServeAll(connection);
  if (!goesOn && !connection.stream.aborted()) connection.stream.LingerBeforeClose();
  Closing closing;
  const std::lock_guard lock(mutex_);
  --atWork_;
  --clients_[connection.client].atWork;
  connection.state = State::Ready;
  if (goesOn && !stopping_) {
    Advance(connection, closing);
  } else {
    Release(connection, closing);
  }
  StartReady();
  changed_.notify_all();
}

/// Serves requests for as long as they follow one another. @return whether the connection goes on
bool ConnectionGate::ServeAll(Connection& connection) {
  ConnectionStream& stream = connection.stream;
  for (;;) {
    if (!connection.server.Serve(stream) || stream.aborted()) return false;
    {
      const std::lock_guard lock(mutex_);
      if (stopping_) return false;
      if (atWork_ >= few) return true;
    }
    if (!stream.WaitForBytes(briefMilliseconds)) return true;
    Moved wait = Moved::WaitReadable;
    const auto arrival = stream.Collect(wait);
    if (arrival == ConnectionStream::Arrival::Closed) return false;
    if (arrival != ConnectionStream::Arrival::Head) return true;
  }
}

/// Takes a connection out of the gate; it is closed when the lock is free.
void ConnectionGate::Release(Connection& connection, Closing& closing) {
  Unpark(connection);
  ready_.erase(std::remove(ready_.begin(), ready_.end(), &connection), ready_.end());
  const auto client = clients_.find(connection.client);
  if (client != clients_.end() && --client->second.connections == 0) clients_.erase(client);
  const auto found = connections_.find(connection.id);
  closing.push_back(std::move(found->second));
  connections_.erase(found);
}

void ConnectionGate::Expire(Closing& closing) {
  ExpireQueue(State::Preparing, limits_.prepare, closing);
  ExpireQueue(State::Head, limits_.head, closing);
  ExpireQueue(State::Idle, limits_.idle, closing);
}

void ConnectionGate::ExpireQueue(State state, std::chrono::milliseconds limit, Closing& closing) {
  Queue& queue = *QueueOf(state);
  const auto oldest = Clock::now() - limit;
  while (!queue.empty() && queue.front()->since < oldest) {
    Connection& connection = *queue.front();
    if (state == State::Head) connection.server.Refuse(connection.stream, 408);
    Release(connection, closing);
  }
}

void ConnectionGate::CloseAll() {
  for (Listener& listener : listeners_) close(std::exchange(listener.socket, -1));
  Closing closing;
  std::unique_lock lock(mutex_);
  for (Queue* queue : {&preparing_, &heads_, &idle_}) {
    while (!queue->empty()) Release(*queue->front(), closing);
  }
  while (!ready_.empty()) Release(*ready_.front(), closing);
  // Whoever waits for a next request sees the end of the connection; answers go on.
  for (auto& [id, connection] : connections_) connection->stream.ShutdownReading();
  changed_.wait_for(lock, grace, [this] { return connections_.empty(); });
  for (auto& [id, connection] : connections_) {
    connection->stream.Abort();
    connection->stream.ShutdownBoth();
  }
  changed_.wait(lock, [this] { return connections_.empty(); });
}

}  // namespace vantry_sim
