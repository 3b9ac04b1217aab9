#pragma once

#include <string>

namespace vtdirect_test {

/// A certificate to be made. Its days count from now.
struct CertificateOrder {
  std::string name;                    ///< of its files, "<name>.pem" and "<name>.key"
  std::string hosts = "IP:127.0.0.1";  ///< as OpenSSL writes them; empty for an authority
  int firstDay = -1;
  int lastDay = 2;
  std::string authority = {};  ///< the name of the files of its authority; empty: itself
};

/// Writes a key and a certificate into a directory, in the order's words and nothing else: also such that no
/// tool would make.
/// @return the path of the certificate
std::string MakeCertificate(const std::string& directory, const CertificateOrder& order);

/// The day so many days from now, in UTC: "2026-10-01".
std::string DayText(int days);

}  // namespace vtdirect_test
