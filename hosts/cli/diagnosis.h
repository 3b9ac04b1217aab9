#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "hosts/cli/exit_code.h"
#include "hosts/cli/host.h"

namespace vtdirect_cli {

/// Why an operation on an address has failed.
///
/// The library tells success from failure, and hardly more. What stands between is asked for afterwards, by
/// its own functions: whether a demand for authentication went without an answer, what ServerSupported says
/// of the server, whether FileExists finds the object. So a failure costs some further requests, and an
/// object that the server keeps from this user can't be told from one that is not there. No trace line is
/// read for it.
/// @param missing  whether the operation has shown already that the server doesn't deliver the object
[[nodiscard]] Failure Diagnose(Host& host, const std::string& address, bool missing);

/// What is wrong with the server at this URL, or nothing when it can be used. Makes requests.
[[nodiscard]] std::optional<Failure> DiagnoseServer(Host& host, const std::string& url);

/// Why a directory could not be listed, or not to its end.
/// @param path       as the user gave it; without a closing "/" it may be that of a document
/// @param delivered  entries that came before the listing ended
[[nodiscard]] Failure DiagnoseDirectory(Host& host, const std::string& path, std::uint64_t delivered);

/// Why an address that names an object by its id can't be listed: because it is a document, if it is there.
[[nodiscard]] Failure DiagnoseObjectAsDirectory(Host& host, const std::string& address);

/// The class of a failure that ServerSupported has reported.
/// @param code  of ServerSupported
[[nodiscard]] Failure ServerFailure(const Host& host, const std::string& url, std::int32_t code);

/// The failure of a program that was told to stop.
[[nodiscard]] Failure InterruptedFailure();

}  // namespace vtdirect_cli
