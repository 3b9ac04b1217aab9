#pragma once

#include <iosfwd>
#include <string>

namespace vtdirect_cli {

/// What is wrong with the value of --trace, or the empty text: it takes digits from 0 to 3.
[[nodiscard]] std::string TraceLevelsFault(const std::string& levels);

/// Takes the library's trace over, for people alone: nothing that the program does or says rests on a trace.
/// Lines of the named types go to `err`, fit for a terminal.
/// @param levels  digits: 0 information, 1 routine misses, 2 warnings, 3 errors; empty shows nothing
/// @param err     outlives the library's last call
void StartTraceLog(const std::string& levels, std::ostream& err);

}  // namespace vtdirect_cli
