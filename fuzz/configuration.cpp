#include "fuzz/support/input.h"
#include "hosts/cli/servers/server_list.h"

using namespace vtdirect_cli;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = vtdirect_fuzz::TextOf(data, size);
  Configuration given;
  (void)AddServerArgument(text.substr(0, text.find('\n')), given);
  const auto configuration = ReadConfiguration(text, "config");
  if (!configuration) return 0;
  (void)ConfigurationFault(*configuration);
  for (const auto& [nickname, url] : configuration->servers) {
    vtdirect_fuzz::Require(!NicknameFault(nickname) && !ServerUrlFault(url));
    std::optional<Failure> fault;
    (void)SettingsFor(*configuration, url, &fault);
  }
  return 0;
}
