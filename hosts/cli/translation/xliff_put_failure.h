#pragma once

#include <string>

#include "hosts/cli/failures/failure.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/local_source.h"
#include "hosts/cli/translation/xliff_subject.h"

namespace vtdirect_cli {

/// What `xliff put` sends, and what the document had before.
struct XliffPut {
  XliffSubject subject;
  LocalSource file;
  std::string language;
  SourceXliff before;
};

/// Why the file was not taken, what is on the server now, and what to do next. Makes requests.
[[nodiscard]] Failure SendingFailure(Host& host, const XliffPut& put);

/// The failure of a file that the server has taken, when the document doesn't show it as its source XLIFF.
/// @param after  what the document shows now
[[nodiscard]] Failure UnlinkedFailure(Host& host, const XliffPut& put, const SourceXliff& after);

}  // namespace vtdirect_cli
