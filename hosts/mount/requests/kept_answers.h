#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>

#include "hosts/mount/requests/answer.h"
#include "hosts/mount/requests/failure_errno.h"

namespace vtdirect_mount {

/// Answers that are kept for some time. Of several threads that want the same one, the first asks and the
/// others wait for what it learns. While the server is away, what was known before stays the answer.
/// Any thread; no lock is held while a question is asked.
template <typename Value>
class KeptAnswers {
 public:
  using Clock = std::chrono::steady_clock;
  using Question = std::function<Answer<Value>()>;

  /// @param age  how long an answer counts; asked anew at each call with zero
  explicit KeptAnswers(Clock::duration age) : age_(age) {}

  /// The answer that is kept and still counts; neither value nor error when there is none.
  [[nodiscard]] Answer<Value> Peek(const std::string& key) {
    const std::lock_guard lock(mutex_);
    const auto place = kept_.find(key);
    return place != kept_.end() && Counts(place->second) ? place->second.answer : Answer<Value>{};
  }

  /// The answer that was kept last, whether it still counts or not; neither value nor error when there is none.
  [[nodiscard]] Answer<Value> Recall(const std::string& key) {
    const std::lock_guard lock(mutex_);
    const auto place = kept_.find(key);
    return place == kept_.end() ? Answer<Value>{} : place->second.answer;
  }

  /// The answer that counts, or else what the question gives. Blocks as long as the question does.
  [[nodiscard]] Answer<Value> Get(const std::string& key, const Question& ask) {
    std::unique_lock lock(mutex_);
    Kept& kept = kept_[key];
    if (kept.isAsked) return WaitFor(lock, key);
    if (Counts(kept)) return kept.answer;
    kept.isAsked = true;
    const std::uint64_t generation = generation_;
    lock.unlock();
    Answer<Value> answer = ask();
    lock.lock();
    return Keep(key, std::move(answer), generation);
  }

  /// What the question gives now, whatever is kept. An error is an error here, also while the server is away: for
  /// those who change something by what they learn. Blocks as long as the question does.
  [[nodiscard]] Answer<Value> AskNow(const std::string& key, const Question& ask) {
    std::unique_lock lock(mutex_);
    // One that is under way may have been answered before the caller came.
    ended_.wait(lock, [&] { return !kept_[key].isAsked; });
    kept_[key].isAsked = true;
    const std::uint64_t generation = generation_;
    lock.unlock();
    Answer<Value> answer = ask();
    lock.lock();
    static_cast<void>(Keep(key, answer, generation));
    return answer;
  }

  /// Puts in what was learned by other means.
  void Put(const std::string& key, Value value) {
    const std::lock_guard lock(mutex_);
    Kept& kept = kept_[key];
    kept.answer = Found(std::move(value));
    kept.when = Clock::now();
    kept.isStale = false;
  }

  /// Lets no answer count any more, those that are on their way included. They still help out while the
  /// server is away.
  void Outdate() {
    const std::lock_guard lock(mutex_);
    ++generation_;
    for (auto& [key, kept] : kept_) kept.isStale = true;
  }

  /// The same for one key.
  void Outdate(const std::string& key) {
    const std::lock_guard lock(mutex_);
    ++generation_;
    const auto place = kept_.find(key);
    if (place != kept_.end()) place->second.isStale = true;
  }

 private:
  struct Kept {
    Answer<Value> answer;
    typename Clock::time_point when{};
    bool isAsked = false;
    bool isStale = false;
    std::uint64_t asked = 0;  // how many questions have ended
    Answer<Value> latest;     // what the last of them gave, an error too
  };

  [[nodiscard]] bool Counts(const Kept& kept) const {
    return kept.answer.value != nullptr && !kept.isStale && Clock::now() - kept.when < age_;
  }

  [[nodiscard]] Answer<Value> WaitFor(std::unique_lock<std::mutex>& lock, const std::string& key) {
    const std::uint64_t before = kept_[key].asked;
    ended_.wait(lock, [&] { return kept_[key].asked != before; });
    return kept_[key].latest;
  }

  // An error is for those who wait now, and is not kept: the next one asks again.
  [[nodiscard]] Answer<Value> Keep(const std::string& key, Answer<Value> answer, std::uint64_t generation) {
    Kept& kept = kept_[key];
    if (answer.value == nullptr && kept.answer.value != nullptr && IsOfTheServersAbsence(answer.error)) {
      answer = kept.answer;
    }
    if (answer.value != nullptr) {
      kept.answer = answer;
      kept.when = Clock::now();
      kept.isStale = generation != generation_;
    } else {
      kept.answer = {};
    }
    kept.isAsked = false;
    ++kept.asked;
    kept.latest = answer;
    ended_.notify_all();
    return answer;
  }

  const typename Clock::duration age_;
  std::mutex mutex_;
  std::condition_variable ended_;
  std::unordered_map<std::string, Kept> kept_;
  std::uint64_t generation_ = 0;
};

}  // namespace vtdirect_mount
