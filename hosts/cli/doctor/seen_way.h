#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/doctor/examined_step.h"
#include "hosts/cli/http_log/http_log.h"

/// What the first exchanges with a server show of the way to it. Pure: makes no request.
namespace vtdirect_cli {

/// How exchanges reached a server: its address and the time to connect, and whether there was a proxy between.
/// Nothing if none got an answer.
[[nodiscard]] std::optional<ExaminedStep> ConnectionSeen(
    const std::vector<du::http::ObservedExchange>& exchanges);

/// Whose certificate the server has shown, who has issued it and until when it is valid; a warning if that is
/// soon. Nothing if no exchange made a connection over TLS.
/// @param now  seconds since 1970
[[nodiscard]] std::optional<ExaminedStep> CertificateSeen(
    const std::vector<du::http::ObservedExchange>& exchanges, long now);

/// Whether the server wanted a login, and which one it took or refused.
[[nodiscard]] ExaminedStep LoginSeen(const std::vector<du::http::ObservedExchange>& exchanges);

/// The version that the server calls its own: "12.1.2.4"; empty if it has told none.
[[nodiscard]] std::string VersionSeen(const std::vector<du::http::ObservedExchange>& exchanges);

/// The services that the server has shown, with their versions: "DataAdmin 5, DynamicDocMgmt 2"; empty without
/// any.
[[nodiscard]] std::string ServicesSeen(const std::vector<du::http::ObservedExchange>& exchanges);

/// Whether a request carried a login that was not refused.
[[nodiscard]] bool LoginWasTaken(const std::vector<du::http::ObservedExchange>& exchanges);

}  // namespace vtdirect_cli
