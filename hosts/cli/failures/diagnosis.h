#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "hosts/cli/failures/failure.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {

/// What an operation that failed has shown of its object: that the server doesn't deliver it, or nothing.
enum class Seen { Missing, Unknown };

/// Why an operation on an address has failed.
///
/// The reason of the last call of the library that failed tells most of it, without a request. Where it says
/// that something was not found, or there is none, the server is asked whether it can be used at all, since
/// one of another kind knows nothing of what it is asked for; and if that does not tell it either, for the
/// object. An object that the server keeps from this user can't be told from one that is not there.
[[nodiscard]] Failure Diagnose(Host& host, const std::string& address, Seen seen);

/// Why the server, which can be used, did not give an object. Makes no request.
/// @param reason  of the call that asked for the object; nothing if it gave none
[[nodiscard]] Failure ObjectFailure(const Host& host, const std::string& address,
                                    const std::optional<Reason>& reason);

/// What is wrong with the server at this URL, or nothing when it can be used. Makes requests, unless the last
/// reason tells it.
[[nodiscard]] std::optional<Failure> DiagnoseServer(Host& host, const std::string& url);

/// What the last reason tells of the server at this URL by itself; nothing if that can be used, or if the reason
/// does not tell. Makes no request.
[[nodiscard]] std::optional<Failure> ServerFailureByReason(const Host& host, const std::string& url);

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
