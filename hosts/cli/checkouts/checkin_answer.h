#pragma once

#include <optional>
#include <string>

#include "hosts/cli/failures/failure.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {

/// What is known of a check-in that the library calls done. It does so for every answer of success, also for one that
/// names no document: that of a server that keeps it to itself, or of a proxy that has kept the request.
struct CheckinAnswer {
  std::string iteration;  ///< UID of what it has made; empty if it is not known whether it was carried out
  bool isTold = false;    ///< the answer named it; else the server shows it
  std::optional<Reason> reason = std::nullopt;  ///< what was wrong with the answer
};

/// Takes the iteration from the answer, or asks for it: the document has one then that it did not have before. Makes
/// requests only in that case.
/// @param told         what the library has given for the check-in
/// @param workingCopy  UID of what was checked in
/// @param document     its UID before the checkout; empty if it isn't kept
/// @param sha256       of the bytes that the iteration has if it is the right one; empty if that is not known
[[nodiscard]] CheckinAnswer ReadCheckinAnswer(Host& host, const std::string& told,
                                              const std::string& workingCopy, const std::string& document,
                                              const std::string& sha256 = {});

/// The failure of a check-in of which nothing is known. What is kept of it has to stay.
/// @param state  what is certain, before "whether it is checked in is not known"
[[nodiscard]] Failure UnknownCheckin(const CheckinAnswer& answer, const std::string& state);

}  // namespace vtdirect_cli
