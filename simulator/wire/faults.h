#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantry_sim {

/// What goes wrong with an answer.
struct FaultAction {
  enum class Kind {
    Status,      ///< answer with `status` and `text`, or a JSON reason for an empty one, whatever was asked
    Stall,       ///< after `amount` bytes of the body (none: before the status line) send nothing more, stay
                 ///< connected
    Cut,         ///< announce the whole length, send `amount` bytes of the body, close the connection
    ChunkedCut,  ///< send the body in chunks, close the connection after `amount` bytes and before the last
                 ///< chunk
    Drop,        ///< close the connection without a single byte of an answer; nothing is carried out
    LostAnswer,  ///< carry out what was asked, then close the connection without a byte
    Slow,        ///< send the body at `amount` bytes a second
    Delay,       ///< wait `amount` milliseconds, then go on as ever
    Busy,        ///< answer 503, with `amount` seconds in Retry-After
    Corrupt,     ///< send the body with one bit of its middle byte turned over
    Redirect,    ///< send the client to `text`
    ExpireSession,  ///< end the session that the request came with, or the nonce where there are none, then
                    ///< go on
  };
  Kind kind = Kind::Status;
  int status = 0;
  std::optional<std::uint64_t> amount;
  std::string text;
};

/// One rule: which requests it meets, what happens to them, and how often.
struct FaultRule {
  std::string method;   ///< "*" for any
  std::string pattern;  ///< glob on the request target, where "*" stands for any run of characters
  FaultAction action;
  std::uint64_t after = 0;             ///< so many matches go untouched first
  std::optional<unsigned> percent;     ///< of the matches that are left, so many of a hundred are met
  std::uint64_t seed = 1;              ///< of the numbers that `percent` is compared with
  std::optional<std::uint64_t> count;  ///< only so many are met; nothing: all of them
};

/// Reads the text of a fault:
///
///     METHOD PATTERN=[after:N,][chance:PERCENT[:SEED],]ACTION[*COUNT]
///
/// METHOD is an HTTP method or "*". PATTERN is compared with the whole target, path and query, as it is
/// on the request line; only "*" is special in it, and it stands for any run of characters, "/" included. A
/// pattern that begins with neither "/" nor "*" gets a "/" in front. The last "=" separates pattern and action,
/// so a pattern may hold "="; but where an action has a text of its own, `status:NNN:BODY` or `redirect:URL`,
/// it is the first "=" that such an action comes after. ACTION is a status from 200 to 599, `stall`,
/// `stall:BYTES`, `cut:BYTES`, `chunked-cut:BYTES`, `drop`, `lost-answer`, `slow:BYTES_PER_SECOND`,
/// `delay:MILLISECONDS`, `busy:SECONDS`, `status:NNN:BODY`, `corrupt`, `redirect:URL` or `expire-session`.
/// @param[out] error what is wrong with the text, when nothing is returned.
std::optional<FaultRule> ParseFaultRule(std::string_view text, std::string* error);

/// Whether the glob covers the whole text. "*" is the only special character. Linear in text times pattern.
bool GlobMatches(std::string_view pattern, std::string_view text);

}  // namespace vantry_sim
