#pragma once

#include <string>

namespace vtdirect_test {

/// True when the openssl program is there, which plays the server of the TLS tests.
bool HaveOpenSsl();

/// Writes a key and a certificate of its own for `subjectName` ("IP:127.0.0.1") into a directory.
/// @return the path of the certificate; the key is beside it, as "<name>.key"
std::string MakeCertificate(const std::string& directory, const std::string& name,
                            const std::string& subjectName);

/// Writes the key of such a certificate once more, locked with a passphrase, as "<name>.locked.key".
std::string MakeLockedKey(const std::string& directory, const std::string& name,
                          const std::string& passphrase);

/// Writes such a certificate and its key into one PKCS#12 file, "<name>.p12".
std::string MakePkcs12(const std::string& directory, const std::string& name, const std::string& passphrase);

/// A TLS server on 127.0.0.1 that answers "GET /name" with the file of that name, which holds a whole answer,
/// header included.
class TlsServer {
 public:
  /// @param directory  holds the files; the certificate and its key are in it under `name`
  TlsServer(const std::string& directory, const std::string& name);
  ~TlsServer();
  TlsServer(const TlsServer&) = delete;
  TlsServer& operator=(const TlsServer&) = delete;

  [[nodiscard]] std::string Url() const { return "https://127.0.0.1:" + port_; }
  [[nodiscard]] const std::string& port() const { return port_; }

 private:
  int process_ = -1;
  int output_ = -1;
  std::string port_;
};

}  // namespace vtdirect_test
