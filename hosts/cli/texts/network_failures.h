#pragma once

#include <vtdirect/platform/failure_detail.h>

#include <optional>
#include <span>
#include <string>

#include "hosts/cli/failures/reasons.h"

/// What went wrong between here and a server, in words, and what to do next. docs/troubleshooting.md is made
/// of the same sentences; a test holds the two together.
namespace vtdirect_cli {

/// Whether a request has reached the server, or what answers in its place.
enum class Reached { Nobody, Somebody };

/// What to do next about one detail.
struct NetworkAdvice {
  du::http::FailureDetail detail;
  Reached reached;
  const char* text;  ///< without a full stop, with a small letter in front
};

/// By rising number of the detail, without Unknown.
[[nodiscard]] std::span<const NetworkAdvice> NetworkAdvices();

/// A failure of the way to a server, or of what answers there.
struct NetworkFailure {
  Reached reached = Reached::Nobody;
  std::string what;    ///< "the server's certificate expired on 2026-10-01"
  std::string advice;  ///< what to do next; empty when there is none
};

/// Nothing for a reason that is not about the way to a server: a refusal of what was asked, a local file.
[[nodiscard]] std::optional<NetworkFailure> NetworkFailureOf(const Reason& reason);

/// "cannot connect to URL: what", or, when somebody was reached, "no usable answer from URL: what", with the
/// advice.
/// @param reason   why the server can't be used, if that is known
/// @param address  what it was asked for; empty for nothing in particular
[[nodiscard]] Failure UnusableServer(const std::string& url, const std::optional<Reason>& reason,
                                     const std::string& address = {});

/// What an answer that is none says, and what to do next: "the server is not ready to work (HTTP 503); try
/// again later".
/// @param reason  with a detail or with a status
[[nodiscard]] std::string AnswerText(const Reason& reason);

/// What the reason says of the way to the server, for brackets after a message; empty when it says nothing.
[[nodiscard]] std::string NetworkHint(const std::optional<Reason>& reason);

}  // namespace vtdirect_cli
