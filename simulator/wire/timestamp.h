#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantry_sim {

/// A time as text, in UTC: "2026-01-31T09:00:00.123Z". @param milliseconds since 1970
std::string Timestamp(std::int64_t milliseconds);

/// The same without the fraction of the second.
std::string TimestampOfSecond(std::int64_t milliseconds);

/// Reads a time in UTC, with or without a fraction of up to three digits, of the years 1970 to 9999. Nothing
/// for any other text.
std::optional<std::int64_t> ReadTimestamp(std::string_view text);

}  // namespace vantry_sim
