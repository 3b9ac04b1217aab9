#pragma once

namespace lxservices::cms_interface {

/// A text from a host, or "" for null. Pure.
[[nodiscard]] constexpr const char* TextOrEmpty(const char* text) noexcept {
  return text != nullptr ? text : "";
}

/// Whether a text from a host is neither null nor empty. Pure.
[[nodiscard]] constexpr bool IsGiven(const char* text) noexcept {
  return text != nullptr && *text != '\0';
}

}  // namespace lxservices::cms_interface
