#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "hosts/cli/failures/result.h"

namespace vtdirect_cli {

/// Why a file is no XLIFF that a server should get.
struct XliffFault {
  std::uint64_t line = 0;  ///< where it was found, from 1
  std::string what;        ///< completes "FILE, line 7: ..."
};

/// Fills a buffer from the file. Gives how much; 0 at its end, and a negative number when reading failed.
using ReadFunction = std::function<std::ptrdiff_t(char* buffer, std::size_t size)>;

/// Whether two names of languages can mean the same: equal without regard to case, with "_" for "-", as far
/// as both go. So "en" fits "en-US" and "EN_us", and "en-GB" doesn't fit "en-US".
[[nodiscard]] bool LanguagesFit(const std::string& one, const std::string& other);

/// Checks that a file is well-formed XML with the frame of XLIFF 1.2 or 2.0 to 2.2: its root, namespace and
/// version, at least one <file>, and source languages that fit. The content in that frame isn't looked at.
///
/// The file is read piece by piece, and no file makes the check take more than a bounded amount of memory or
/// read anything else: a document type declaration ends it, as does an element too deep, and a tag too long.
/// @param language  what every source language has to fit
/// @return the first fault in the order of the file
[[nodiscard]] std::optional<XliffFault> CheckXliff(const ReadFunction& read, const std::string& language);

/// Checks a local file.
/// @return what keeps the file from being fit, nothing when it is; a failure when it can't be read
[[nodiscard]] Result<std::optional<XliffFault>> CheckXliffFile(const std::string& path,
                                                               const std::string& language);

}  // namespace vtdirect_cli
