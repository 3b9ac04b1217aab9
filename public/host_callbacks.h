#pragma once

#include <functional>

/// What the host has registered. Nothing here makes a request.
namespace lxservices::cms_interface {

/// Asks the authentication callback that is registered now; false without one. Server objects hold this and
/// not the callback, so that a later RegisterAuth applies to them too. Any thread, several at once.
[[nodiscard]] bool ForwardAuth(const char* url);

/// Hands a copy of the task to the host's task runner and gives its result; the runner decides on which
/// thread and when the task runs. Without a runner the task runs at once, on this thread, and the result is
/// true; an empty task then raises std::bad_function_call, and what a task throws passes through.
[[nodiscard]] bool RunTask(std::function<void()> task);

}  // namespace lxservices::cms_interface
