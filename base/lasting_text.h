#pragma once

#include <string>

namespace lxservices::cms_interface {

/// The same text, at an address that stays valid for the life of the process: for what is handed to a host
/// as a pointer, which another thread's change must not take away under it. Each distinct text is kept once,
/// so only texts that a host sets a few times in its life belong here. Any thread.
[[nodiscard]] const char* LastingText(const std::string& text);

}  // namespace lxservices::cms_interface
