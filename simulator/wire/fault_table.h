#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/wire/faults.h"

namespace vantry_sim {

/// A fault that met a request.
struct Fault {
  std::uint64_t rule = 0;  ///< its id in the table
  FaultAction action;
};

/// A rule of the table as it is now.
struct FaultEntry {
  std::uint64_t id = 0;
  std::string text;                   ///< as it was given
  std::uint64_t matches = 0;          ///< requests that fitted its method and its pattern
  std::uint64_t met = 0;              ///< those of them that it did something to
  std::optional<std::uint64_t> left;  ///< how many it will still meet; nothing: no limit
};

/// The rules in force, which may change while the server runs. Any thread, several at once.
class FaultTable {
 public:
  /// @param texts rules that ParseFaultRule reads; any other one is left out
  explicit FaultTable(const std::vector<std::string>& texts = {});

  /// Adds a rule at the end. @return its id, above 0; nothing with `error` set for a text that is no rule
  std::optional<std::uint64_t> Add(std::string_view text, std::string* error);

  /// @return false for an unknown id
  bool Remove(std::uint64_t id);

  /// Removes all rules.
  void Clear();

  /// These rules alone, counted again.
  void Reset(const std::vector<std::string>& texts);

  /// All rules, in the order in which they count.
  [[nodiscard]] std::vector<FaultEntry> List() const;
  [[nodiscard]] std::optional<FaultEntry> Find(std::uint64_t id) const;

  /// The first rule that meets the request. Every rule up to it that fits counts a match; one that lets a
  /// match pass, since it comes after others or by chance, leaves it to the rules after it.
  /// @param target path and query as they are on the request line.
  std::optional<Fault> Take(std::string_view method, std::string_view target);

 private:
  struct Entry {
    std::uint64_t id = 0;
    std::string text;
    FaultRule rule;
    std::uint64_t matches = 0;
    std::uint64_t met = 0;
    std::uint64_t random = 0;  ///< state of the numbers for `percent`
  };
  static FaultEntry Show(const Entry& entry);
  static bool Meets(Entry& entry);

  mutable std::mutex mutex_;
  std::atomic<bool> empty_ = true;
  std::uint64_t lastId_ = 0;
  std::vector<Entry> entries_;
};

}  // namespace vantry_sim
