#pragma once

namespace VtDirectManager {

/// A host's batch of work. The host holds the only lasting reference; which servers it has written off is
/// kept in the list of sessions (public/session_list.h), so that nobody has to hold a session to look at it.
class Session {};

}  // namespace VtDirectManager
