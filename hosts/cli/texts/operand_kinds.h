#pragma once

#include "hosts/cli/commands/command.h"

namespace vtdirect_cli {

/// What the operands of a command are, for what a completion offers.
struct OperandKinds {
  bool remote = false;     ///< addresses and paths on a server
  bool files = false;      ///< local files and directories
  bool nicknames = false;  ///< nicknames of listed servers
};

[[nodiscard]] inline OperandKinds OperandKindsOf(const CommandRow& row) {
  OperandKinds kinds;
  for (const OperandRow& operand : row.operands) {
    kinds.remote |= operand.name == "ADDRESS" || operand.name == "PATH";
    kinds.files |= operand.name == "FILE" || operand.name == "DIR";
    kinds.nicknames |= operand.name == "NICK" || operand.name == "URL";
  }
  return kinds;
}

/// "remote files nick" as far as they apply, separated by blanks: what the scripts know them by.
[[nodiscard]] inline std::string WordsOf(const OperandKinds& kinds) {
  std::string words = kinds.remote ? "remote" : "";
  if (kinds.files) words += words.empty() ? "files" : " files";
  if (kinds.nicknames) words += words.empty() ? "nick" : " nick";
  return words;
}

}  // namespace vtdirect_cli
