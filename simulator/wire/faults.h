#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantry_sim {

/// What goes wrong with an answer.
struct FaultAction {
  enum class Kind {
    kStatus,  ///< answer with `status` and a JSON reason, whatever was asked
    kStall,   ///< after `bytes` of the body (none: before the status line) send nothing more, stay connected
    kCut,     ///< announce the whole length, send `bytes` of the body, close the connection
    kChunkedCut,  ///< send the body in chunks, close the connection after `bytes` and before the last chunk
    kDrop,        ///< close the connection without a single byte of an answer
  };
  Kind kind = Kind::kStatus;
  int status = 0;
  std::optional<std::uint64_t> bytes;
};

/// One `--fault`: which requests it meets, what happens to them, and how often.
struct FaultRule {
  std::string method;   ///< "*" for any
  std::string pattern;  ///< glob on the request target, where "*" stands for any run of characters
  FaultAction action;
  std::optional<std::uint64_t> count;  ///< only so many matches, counted from the first; nothing: all of them
};

/// Reads the text of a `--fault` option:
///
///     METHOD PATTERN=ACTION[*COUNT]
///
/// METHOD is an HTTP method or "*". PATTERN is compared with the whole target, path and query, as it stands
/// on the request line; only "*" is special in it, and it stands for any run of characters, "/" included. A
/// pattern that begins with neither "/" nor "*" gets a "/" in front. The last "=" parts pattern and action,
/// so a pattern may hold "=". ACTION is a status from 200 to 599, `stall`, `stall:BYTES`, `cut:BYTES`,
/// `chunked-cut:BYTES` or `drop`. COUNT limits the rule to its first COUNT matches.
/// @param[out] error what is wrong with the text, when nothing is returned.
std::optional<FaultRule> ParseFaultRule(std::string_view text, std::string* error);

/// Whether the glob covers the whole text. "*" is the only special character. Linear in text times pattern.
bool GlobMatches(std::string_view pattern, std::string_view text);

/// The rules in force. May be asked by several threads at once.
class FaultTable {
 public:
  explicit FaultTable(std::vector<FaultRule> rules);

  /// The action of the first rule that meets the request and is not used up; counts that match.
  /// @param target path and query as they stand on the request line.
  std::optional<FaultAction> Take(std::string_view method, std::string_view target);

 private:
  std::mutex mutex_;
  std::vector<FaultRule> rules_;
};

}  // namespace vantry_sim
