#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "hosts/mount/cache/content_cache.h"
#include "hosts/mount/requests/answer.h"
#include "hosts/mount/requests/task_pool.h"
#include "hosts/mount/tree/document_facts.h"

namespace vtdirect_mount {

/// Brings contents into the cache. However many want one content, it is fetched once; a fetch that nobody
/// waits for any more is ended. Any thread.
class ContentFetches {
 public:
  /// One who wants a content.
  struct Wish {
    /// Asked on another thread while the fetch goes on.
    std::function<bool()> isWanted;
    /// Told how it ended, on this thread or another; without any lock.
    std::function<void(const Answer<OpenFile>&)> done;
  };

  /// @param report  told what went wrong, for the log
  ContentFetches(ContentCache& cache, std::size_t mostAtOnce, std::function<void(const std::string&)> report)
      : cache_(cache), report_(std::move(report)), pool_(mostAtOnce) {}
  ~ContentFetches() { Stop(); }

  /// Gives the content, from the cache at once or when it is there. Does not block.
  void Fetch(const Iteration& iteration, Wish wish);

  /// Ends what is under way; waits until it has ended.
  void Stop();
  /// The same, but waits no longer than so much.
  /// @return whether all has ended; if not, this must not be destroyed
  [[nodiscard]] bool StopWithin(std::chrono::milliseconds most);

 private:
  struct Flight {
    std::vector<Wish> wishes;
  };

  void Run(const Iteration& iteration, const std::shared_ptr<Flight>& flight);
  [[nodiscard]] Answer<OpenFile> FetchWithRoom(const Iteration& iteration,
                                               const std::shared_ptr<Flight>& flight);
  [[nodiscard]] int ErrorOfWriting(const Iteration& iteration);
  [[nodiscard]] Answer<OpenFile> Download(const Iteration& iteration, const std::shared_ptr<Flight>& flight);
  [[nodiscard]] bool GoesOn(const Iteration& iteration, const std::shared_ptr<Flight>& flight);
  [[nodiscard]] std::vector<Wish> End(const Iteration& iteration, const std::shared_ptr<Flight>& flight);

  ContentCache& cache_;
  const std::function<void(const std::string&)> report_;
  std::mutex mutex_;
  std::unordered_map<std::string, std::shared_ptr<Flight>> flights_;
  bool isStopped_ = false;
  TaskPool pool_;
};

}  // namespace vtdirect_mount
