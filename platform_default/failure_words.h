#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "platform/failure_detail.h"

namespace vtdirect::platform {

/// The sentence of one detail. "{}" is a place for a name, a time or a file.
struct FailureSentence {
  du::http::FailureDetail detail;
  std::string_view pattern;
};

/// All sentences that this platform says, by rising number of their detail.
[[nodiscard]] std::span<const FailureSentence> FailureSentences();

/// A detail with its sentence.
/// @param places  fill the places of the sentence in their order; a missing one leaves its place empty
[[nodiscard]] du::http::FailureReport ReportOf(du::http::FailureDetail detail,
                                               std::initializer_list<std::string_view> places = {});

/// A limit of time for a sentence: "2 s", or "150 ms" for what is no whole number of seconds.
[[nodiscard]] std::string LimitText(long milliseconds);

}  // namespace vtdirect::platform
