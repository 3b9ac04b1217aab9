#include "simulator/wire/fault_table.h"

#include <algorithm>
#include <utility>

namespace vantry_sim {
namespace {

/// The next number of a generator (splitmix64) that gives the same ones for the same seed on every machine.
std::uint64_t NextRandom(std::uint64_t& state) {
  state += 0x9E3779B97F4A7C15ULL;
  std::uint64_t value = state;
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
  return value ^ (value >> 31);
}

}  // namespace

FaultTable::FaultTable(const std::vector<std::string>& texts) {
  Reset(texts);
}

std::optional<std::uint64_t> FaultTable::Add(std::string_view text, std::string* error) {
  auto rule = ParseFaultRule(text, error);
  if (!rule) return std::nullopt;
  const std::lock_guard lock(mutex_);
  Entry entry;
  entry.id = ++lastId_;
  entry.text = text;
  entry.random = rule->seed;
  entry.rule = std::move(*rule);
  entries_.push_back(std::move(entry));
  empty_ = false;
  return lastId_;
}

bool FaultTable::Remove(std::uint64_t id) {
  const std::lock_guard lock(mutex_);
  const bool removed = std::erase_if(entries_, [&](const Entry& entry) { return entry.id == id; }) > 0;
  empty_ = entries_.empty();
  return removed;
}

void FaultTable::Clear() {
  const std::lock_guard lock(mutex_);
  entries_.clear();
  empty_ = true;
}

void FaultTable::Reset(const std::vector<std::string>& texts) {
  Clear();
  std::string ignored;
  for (const std::string& text : texts) static_cast<void>(Add(text, &ignored));
}

std::vector<FaultEntry> FaultTable::List() const {
  const std::lock_guard lock(mutex_);
  std::vector<FaultEntry> list;
  for (const Entry& entry : entries_) list.push_back(Show(entry));
  return list;
}

std::optional<FaultEntry> FaultTable::Find(std::uint64_t id) const {
  const std::lock_guard lock(mutex_);
  for (const Entry& entry : entries_) {
    if (entry.id == id) return Show(entry);
  }
  return std::nullopt;
}

std::optional<Fault> FaultTable::Take(std::string_view method, std::string_view target) {
  if (empty_) return std::nullopt;
  const std::lock_guard lock(mutex_);
  for (Entry& entry : entries_) {
    if (entry.rule.method != "*" && entry.rule.method != method) continue;
    if (!GlobMatches(entry.rule.pattern, target)) continue;
    if (Meets(entry)) return Fault{entry.id, entry.rule.action};
  }
  return std::nullopt;
}

FaultEntry FaultTable::Show(const Entry& entry) {
  FaultEntry out{entry.id, entry.text, entry.matches, entry.met, std::nullopt};
  if (entry.rule.count) out.left = *entry.rule.count - entry.met;
  return out;
}

/// Counts a match, and decides whether the rule does something to it.
bool FaultTable::Meets(Entry& entry) {
  ++entry.matches;
  if (entry.rule.count && entry.met >= *entry.rule.count) return false;
  if (entry.matches <= entry.rule.after) return false;
  if (entry.rule.percent && NextRandom(entry.random) % 100 >= *entry.rule.percent) return false;
  ++entry.met;
  return true;
}

}  // namespace vantry_sim
