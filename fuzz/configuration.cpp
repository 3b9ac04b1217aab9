#include "fuzz/support/input.h"
#include "hosts/cli/servers/server_list.h"

using namespace vtdirect_cli;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = vtdirect_fuzz::TextOf(data, size);
  (void)static_cast<bool>(WithServerArgument(text.substr(0, text.find('\n')), {}));
  const auto configuration = ReadConfiguration(text, "config");
  if (!configuration) return 0;
  (void)ConfigurationFault(*configuration);
  for (const auto& [nickname, url] : configuration->servers) {
    vtdirect_fuzz::Require(!NicknameFault(nickname) && !ServerUrlFault(url));
    (void)SettingsFor(*configuration, url);
  }
  return 0;
}
