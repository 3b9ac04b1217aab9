#pragma once

#include <vtdirect/vt_direct_manager.h>

#include <optional>
#include <string>

#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption_report.h"
#include "hosts/cli/storing/put_request.h"
#include "hosts/cli/storing/put_target.h"

namespace vtdirect_cli {

/// How an upload went.
struct PutOutcome {
  bool stored = false;
  std::string uid;  ///< UID of the result
  /// What the library reported; nothing when it gave up before it had anything to report.
  std::optional<VtDirectManager::StatusCode> code;
  std::size_t sent = 0;        ///< bytes that went out
  std::size_t total = 0;       ///< bytes that were to go out, with what is around the files; 0 until known
  std::string changedFile;     ///< a file that was written to while it was read
  bool copyIsShort = false;    ///< the temporary copy that is sent doesn't hold all of the files
  bool isUnconfirmed = false;  ///< the server has answered with a success that is none of its own
  bool brokenTicket = false;   ///< the server's answer for a place to upload to could not be understood

  [[nodiscard]] bool AllSent() const { return total > 0 && sent >= total; }
};

/// Sends the files and has them stored. Shows the progress; a signal cancels the transfer. Makes requests.
[[nodiscard]] PutOutcome RunUpload(Host& host, const PutRequest& request, const PutTarget& target,
                                   const SourceLinks& links, InterruptionReport& report);

}  // namespace vtdirect_cli
