#include "hosts/cli/servers/configuration_file.h"

#include "hosts/cli/program/environment.h"
#include "hosts/cli/servers/server_list.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {

std::string ConfigurationFile() {
  const std::string named = Environment("VTDIRECT_CONFIG");
  return named.empty() ? DefaultConfigurationPath(Environment("XDG_CONFIG_HOME"), Environment("HOME"))
                       : named;
}

std::string HowToListServer(const std::string& entry) {
  const std::string file = ConfigurationFile();
  const std::string place = file.empty() ? "the configuration file" : Printable(file);
  const std::size_t equals = entry.find('=');
  const std::string line = entry.substr(0, equals) + " = " + entry.substr(equals + 1);
  return "with --server " + entry + " or in " + place + ", under [servers]: " + line;
}

}  // namespace vtdirect_cli
