#pragma once

#include <string>
#include <vector>

#include "simulator/wire/router.h"

namespace vantry_sim {

/// An option of the command line, as its parser knows it.
struct OptionText {
  std::vector<std::string> names;  ///< such as "--help" and "-h"
  std::string value;  ///< a word for it, such as PORT, or words parted by "|"; empty: it takes none
  std::string about;
  std::string defaultValue;
};

/// What is installed beside the program, made from its own tables.
struct ProgramTexts {
  std::vector<OptionText> server;
  std::vector<OptionText> exportCommand;

  /// A manual page, in the language of man.
  [[nodiscard]] std::string ManualPage() const;
  /// Completion for bash. A value is a file, a directory or one of the words, as its word says.
  [[nodiscard]] std::string BashCompletion() const;
};

/// The routes as a table of Markdown: reads first, then what writes.
std::string RouteTable(const std::vector<Router::Listed>& routes);

}  // namespace vantry_sim
