#pragma once

#include <optional>
#include <string>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/result.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {

/// The document that a translation command is about.
struct XliffSubject {
  std::string address;  ///< as it was given
  std::string uid;      ///< what the library's functions for translation take
};

/// Finds the document of the operand ADDRESS, on a server that offers translation. Makes requests.
/// @return a failure for a malformed address, an unlisted server, a document that isn't there, and a server
///         without translation
[[nodiscard]] Result<XliffSubject> SettleSubject(Host& host, const Arguments& arguments);

/// The language of the option --language.
/// @return a usage failure when there is none
[[nodiscard]] Result<std::string> ReadLanguage(const Arguments& arguments);

/// The failure of a translation operation, by its reason. To be called before anything else is asked of the
/// library: it takes up the last reason. Makes a request only if the server knew nothing of what it was asked: it
/// may lack its add-on for translation then.
/// @param otherwise  when the reason tells of neither the server nor the add-on
[[nodiscard]] Failure DiagnoseXliff(Host& host, const XliffSubject& subject, const Failure& otherwise);

/// The source XLIFF of a document, as the server tells it.
struct SourceXliff {
  bool linked = false;  ///< whether there is one
  std::string uid;      ///< empty when it can't be read
  std::string language;
};

/// Asks for the source XLIFF. Makes requests.
[[nodiscard]] SourceXliff FindSourceXliff(const XliffSubject& subject);

/// The same for whoever relies on the answer that there is none: nothing if the server could not tell. Asks a
/// second time when the first question fails.
[[nodiscard]] std::optional<SourceXliff> AskForSourceXliff(const XliffSubject& subject);

/// "vtdirect xliff COMMAND 'ADDRESS'", to be typed by the user.
[[nodiscard]] std::string XliffCommandFor(const std::string& command, const std::string& address);

}  // namespace vtdirect_cli
