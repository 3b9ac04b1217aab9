#include "hosts/cli/servers/netrc.h"

#include <strings.h>

#include "fuzz/support/input.h"

using namespace vtdirect_cli;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto entries = ReadNetrc(vtdirect_fuzz::TextOf(data, size));
  for (const char* user : {"", "anna"}) {
    const auto entry = FindInNetrc(entries, "plm.example", user);
    if (!entry) continue;
    vtdirect_fuzz::Require(entry->isDefault || strcasecmp(entry->machine.c_str(), "plm.example") == 0);
    vtdirect_fuzz::Require(*user == '\0' || entry->login == user);
    vtdirect_fuzz::Require(!entry->password.empty());
  }
  return 0;
}
