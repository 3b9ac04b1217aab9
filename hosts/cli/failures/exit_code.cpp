#include "hosts/cli/failures/exit_code.h"

#include <algorithm>
#include <iterator>

namespace vtdirect_cli {
namespace {

constexpr ExitCodeRow rows[] = {
    {ExitCode::Ok, "ok", "The command did what it was asked."},
    {ExitCode::Failure, "failure", "A failure of no other class."},
    {ExitCode::Usage, "usage", "The command line or the configuration file is wrong. No request was made."},
    {ExitCode::CannotConnect, "cannot-connect", "The server could not be reached, or gave no usable answer."},
    {ExitCode::AuthenticationRefused, "authentication-refused",
     "The server demands credentials, and there were none or it refused them."},
    {ExitCode::ServerUnsupported, "server-unsupported",
     "The server is of a release that is not supported, or lacks what the command needs."},
    {ExitCode::NotFound, "not-found", "The server answered and did not deliver the object."},
    {ExitCode::DownloadFailed, "download-failed",
     "The object is there, but it has no content, or its content did not arrive whole. What was at the "
     "target is "
     "untouched."},
    {ExitCode::LocalFile, "local-file",
     "A local file could not be read or written, or is not what the command takes."},
    {ExitCode::ServerNotListed, "server-not-listed",
     "The address names a server that is not in the list of servers. No request was made to it."},
    {ExitCode::Outdated, "outdated", "A newer iteration exists (status only). All objects were found."},
    {ExitCode::Incomplete, "incomplete",
     "A listing broke off or reached a bound, so that what was printed is not all that is there; or whether "
     "a "
     "change was carried out, or all that the command is to tell, could not be found out."},
    {ExitCode::TimedOut, "timed-out",
     "The time that --max-time or the configuration file allows was over before the command had ended."},
    {ExitCode::Interrupted, "interrupted",
     "Interrupted by SIGINT; SIGTERM gives 143 and SIGHUP 129. No local file is left behind."},
};

// By rising weight.
constexpr ExitCode weights[] = {ExitCode::Ok,
                                ExitCode::Outdated,
                                ExitCode::Incomplete,
                                ExitCode::NotFound,
                                ExitCode::DownloadFailed,
                                ExitCode::Failure,
                                ExitCode::ServerNotListed,
                                ExitCode::Usage,
                                ExitCode::ServerUnsupported,
                                ExitCode::AuthenticationRefused,
                                ExitCode::CannotConnect,
                                ExitCode::LocalFile,
                                ExitCode::TimedOut,
                                ExitCode::Interrupted};

[[nodiscard]] std::ptrdiff_t WeightOf(ExitCode code) {
  return std::find(std::begin(weights), std::end(weights), code) - std::begin(weights);
}

}  // namespace

ExitCode Worse(ExitCode one, ExitCode other) {
  return WeightOf(one) < WeightOf(other) ? other : one;
}

std::span<const ExitCodeRow> ExitCodes() {
  return rows;
}

const char* NameOf(ExitCode code) {
  for (const ExitCodeRow& row : rows) {
    if (row.code == code) return row.name;
  }
  return "failure";
}

}  // namespace vtdirect_cli
