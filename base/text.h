#pragma once

namespace lxservices::cms_interface {

/// A text from a host, or "" for null. Pure.
[[nodiscard]] constexpr const char* TextOrEmpty(const char* text) noexcept {
  return text != nullptr ? text : "";
}

}  // namespace lxservices::cms_interface
