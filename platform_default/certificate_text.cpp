#include "platform_default/certificate_text.h"

#include <arpa/inet.h>
#include <openssl/asn1.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <memory>
#include <string_view>

#include "platform_default/characters.h"

namespace vtdirect::platform {
namespace {

constexpr int mostHosts = 3;
constexpr std::size_t longestHost = 100;

struct NamesFreer {
  void operator()(GENERAL_NAMES* names) const { GENERAL_NAMES_free(names); }
};

std::string_view BytesOf(const ASN1_STRING* text) {
  return {reinterpret_cast<const char*>(ASN1_STRING_get0_data(text)),
          static_cast<std::size_t>(ASN1_STRING_length(text))};
}

bool IsHostByte(char byte) {
  return IsAsciiLetter(byte) || IsAsciiDigit(byte) || byte == '-' || byte == '.' || byte == '*' ||
         byte == '_';
}

std::string AddressText(std::string_view bytes) {
  std::array<char, INET6_ADDRSTRLEN> text{};
  const int family = bytes.size() == 4 ? AF_INET : AF_INET6;
  if (bytes.size() != 4 && bytes.size() != 16) return {};
  return ::inet_ntop(family, bytes.data(), text.data(), text.size()) == nullptr ? "" : text.data();
}

std::string HostText(const GENERAL_NAME* name) {
  if (name->type == GEN_IPADD) return AddressText(BytesOf(name->d.iPAddress));
  if (name->type != GEN_DNS) return {};
  const std::string_view bytes = BytesOf(name->d.dNSName);
  const bool isFit = bytes.size() <= longestHost && std::all_of(bytes.begin(), bytes.end(), IsHostByte);
  return isFit ? std::string(bytes) : std::string();
}

}  // namespace

std::string DateText(const asn1_string_st* time) {
  std::tm parts{};
  if (time == nullptr || ASN1_TIME_to_tm(time, &parts) != 1) return {};
  std::array<char, 32> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%d", &parts);
  return {text.data(), length};
}

std::string HostsOf(const x509_st* certificate) {
  const std::unique_ptr<GENERAL_NAMES, NamesFreer> names(
      static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr)));
  std::string hosts;
  int count = 0;
  for (int at = 0; at < sk_GENERAL_NAME_num(names.get()); ++at) {
    const std::string host = HostText(sk_GENERAL_NAME_value(names.get(), at));
    if (host.empty()) continue;
    if (!hosts.empty()) hosts += ", ";
    if (++count > mostHosts) return hosts + "...";
    hosts += host;
  }
  return hosts;
}

}  // namespace vtdirect::platform
