#include "hosts/cli/doctor/name_lookup.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace vtdirect_cli {
namespace {

constexpr std::size_t mostAddresses = 4;

[[nodiscard]] bool IsAddress(const std::string& host) {
  std::array<unsigned char, 16> bytes{};
  return inet_pton(AF_INET, host.c_str(), bytes.data()) == 1 ||
         inet_pton(AF_INET6, host.c_str(), bytes.data()) == 1;
}

[[nodiscard]] std::vector<std::string> AddressesIn(const addrinfo* list) {
  std::vector<std::string> addresses;
  for (; list != nullptr; list = list->ai_next) {
    std::array<char, NI_MAXHOST> text{};
    if (getnameinfo(list->ai_addr, list->ai_addrlen, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST) !=
        0)
      continue;
    if (std::find(addresses.begin(), addresses.end(), text.data()) == addresses.end())
      addresses.emplace_back(text.data());
  }
  return addresses;
}

[[nodiscard]] std::string ListOf(const std::vector<std::string>& addresses) {
  std::string text;
  for (std::size_t i = 0; i < std::min(addresses.size(), mostAddresses); ++i) {
    text += (text.empty() ? "" : ", ") + addresses[i];
  }
  return addresses.size() > mostAddresses ? text + ", ..." : text;
}

}  // namespace

ExaminedStep ExamineName(const Origin& origin, bool throughProxy) {
  if (IsAddress(origin.host)) return {"name", ExaminedStep::State::Ok, origin.host + " is an address", {}};
  addrinfo hints = {};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int fault = getaddrinfo(origin.host.c_str(), nullptr, &hints, &found);
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> list(found, &freeaddrinfo);
  if (fault == 0)
    return {"name", ExaminedStep::State::Ok, origin.host + " is " + ListOf(AddressesIn(list.get())), {}};
  const std::string seen = origin.host + ": " + gai_strerror(fault);
  if (throughProxy)
    return {"name", ExaminedStep::State::Ok, seen + "; the proxy is the one that has to know it", {}};
  return {"name", ExaminedStep::State::Failed, seen,
          "look at the spelling of the URL, and whether this machine needs a VPN or a proxy to reach it"};
}

}  // namespace vtdirect_cli
