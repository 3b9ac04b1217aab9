#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace vtdirect_mount {

/// Threads that carry out tasks, at most so many at a time. A thread is started when it is first needed.
/// Tasks throw nothing.
class TaskPool {
 public:
  using Task = std::function<void()>;

  explicit TaskPool(std::size_t mostThreads) : mostThreads_(mostThreads) {}
  /// Ends as Stop does.
  ~TaskPool() { Stop(); }
  TaskPool(const TaskPool&) = delete;
  TaskPool& operator=(const TaskPool&) = delete;

  /// Hands a task over; after Stop it is dropped.
  void Post(Task task) { Add(std::move(task), waiting_); }
  /// A task that is begun only when no other one waits.
  void PostLater(Task task) { Add(std::move(task), later_); }

  /// Drops what has not begun and waits for what has.
  void Stop();
  /// The same, but waits no longer than so much.
  /// @return whether all has ended; if not, threads still work and the pool must not be destroyed
  [[nodiscard]] bool StopWithin(std::chrono::milliseconds most);

 private:
  void Add(Task task, std::deque<Task>& queue);
  void Work();
  void DropTasks();

  const std::size_t mostThreads_;
  std::mutex mutex_;
  std::condition_variable hasWork_;
  std::condition_variable isQuiet_;
  std::deque<Task> waiting_;
  std::deque<Task> later_;
  std::vector<std::thread> threads_;
  std::size_t idle_ = 0;
  std::size_t busy_ = 0;
  bool isStopped_ = false;
};

}  // namespace vtdirect_mount
