#pragma once

#include <string>

struct asn1_string_st;
struct x509_st;

/// What a certificate says of itself, for a sentence. A server makes it up, so it is short and plain ASCII.
namespace vtdirect::platform {

/// "2026-10-01"; empty for a time that can't be read.
[[nodiscard]] std::string DateText(const asn1_string_st* time);

/// The first hosts that a certificate is for, names and addresses: "a.example, 127.0.0.1, ..."; empty when it
/// names none. A name with other bytes than a host's is left out.
[[nodiscard]] std::string HostsOf(const x509_st* certificate);

}  // namespace vtdirect::platform
