// The arguments of the command line are the lines of the input.
#include "hosts/cli/commands/command_line.h"

#include <vector>

#include "fuzz/support/input.h"

using namespace vtdirect_cli;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view rest = vtdirect_fuzz::TextOf(data, size);
  std::vector<std::string> words{"vtdirect"};
  while (!rest.empty() && words.size() < 64) words.emplace_back(vtdirect_fuzz::TakePart(rest, '\n'));
  std::vector<const char*> arguments;
  for (const std::string& word : words) arguments.push_back(word.c_str());
  const CommandLine line = ParseCommandLine(static_cast<int>(arguments.size()), arguments.data());
  const int outcomes =
      (line.failure ? 1 : 0) + (line.command != nullptr ? 1 : 0) + (line.text.empty() ? 0 : 1);
  vtdirect_fuzz::Require(outcomes > 0);
  return 0;
}
