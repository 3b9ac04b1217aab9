#include <string_view>

#include "hosts/cli/commands/command.h"

namespace vtdirect_cli {

std::span<const GroupRow> Groups() {
  static const std::vector<GroupRow> rows = {
      {"xliff", "Send a document's text to be translated, and get its translations"},
  };
  return rows;
}

std::string GroupOf(const CommandRow& row) {
  const std::string_view name = row.name;
  const std::size_t blank = name.find(' ');
  return blank == std::string_view::npos ? "" : std::string(name.substr(0, blank));
}

std::string WordOf(const CommandRow& row) {
  const std::string_view name = row.name;
  return std::string(name.substr(name.find(' ') + 1));
}

}  // namespace vtdirect_cli
