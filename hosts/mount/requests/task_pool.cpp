#include "hosts/mount/requests/task_pool.h"

#include <utility>

namespace vtdirect_mount {

void TaskPool::Add(Task task, std::deque<Task>& queue) {
  const std::lock_guard lock(mutex_);
  if (isStopped_) return;
  queue.push_back(std::move(task));
  if (idle_ < waiting_.size() + later_.size() && threads_.size() < mostThreads_) {
    threads_.emplace_back([this] { Work(); });
  }
  hasWork_.notify_one();
}

void TaskPool::Work() {
  std::unique_lock lock(mutex_);
  while (true) {
    ++idle_;
    hasWork_.wait(lock, [this] { return isStopped_ || !waiting_.empty() || !later_.empty(); });
    --idle_;
    if (isStopped_) return;
    std::deque<Task>& queue = waiting_.empty() ? later_ : waiting_;
    Task task = std::move(queue.front());
    queue.pop_front();
    lock.unlock();
    task();
    task = nullptr;  // what it holds goes before the lock is taken
    lock.lock();
  }
}

void TaskPool::Stop() {
  std::vector<std::thread> threads;
  std::deque<Task> dropped;
  std::deque<Task> alsoDropped;
  {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
    threads.swap(threads_);
    dropped.swap(waiting_);
    alsoDropped.swap(later_);
  }
  hasWork_.notify_all();
  for (std::thread& thread : threads) thread.join();
}

}  // namespace vtdirect_mount
