#include "platform_default/client_identity.h"

#include <openssl/err.h>
#include <openssl/pkcs12.h>

#include <fstream>
#include <string_view>
#include <utility>
#include <vector>

namespace vtdirect::platform {
namespace {

/// A certificate with its chain is some kilobytes. What is longer is none.
constexpr std::size_t longestFile = 1024 * 1024;

std::string ReadStart(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::vector<char> bytes(longestFile);
  stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return {bytes.data(), static_cast<std::size_t>(stream.gcount())};
}

bool IsPem(std::string_view content) {
  return content.find("-----BEGIN ") != std::string_view::npos;
}

struct Pkcs12Freer {
  void operator()(PKCS12* bag) const { PKCS12_free(bag); }
};

/// True when a PKCS#12 file opens without a passphrase, as empty text or as none at all.
bool OpensByItself(const std::string& content) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(content.data());
  const std::unique_ptr<PKCS12, Pkcs12Freer> bag(
      d2i_PKCS12(nullptr, &bytes, static_cast<long>(content.size())));
  const bool opens = bag != nullptr && (PKCS12_verify_mac(bag.get(), "", 0) == 1 ||
                                        PKCS12_verify_mac(bag.get(), nullptr, 0) == 1);
  ERR_clear_error();
  return opens;
}

}  // namespace

ClientIdentity::ClientIdentity(du::http::ClientCertificate certificate)
    : certificate_(std::move(certificate)) {}

const std::string& ClientIdentity::keyFile() const {
  return certificate_.keyFile.empty() ? certificate_.certificateFile : certificate_.keyFile;
}

bool ClientIdentity::IsPkcs12() const {
  const std::string content = ReadStart(certificate_.certificateFile);
  return !content.empty() && !IsPem(content);
}

bool ClientIdentity::NeedsPassphrase() const {
  const std::string certificate = ReadStart(certificate_.certificateFile);
  if (!certificate.empty() && !IsPem(certificate)) return !OpensByItself(certificate);
  // Both forms of a locked key in PEM have the word: "BEGIN ENCRYPTED PRIVATE KEY", "Proc-Type: 4,ENCRYPTED".
  return ReadStart(keyFile()).find("ENCRYPTED") != std::string::npos;
}

bool ClientIdentity::Unlock() {
  {
    const std::lock_guard lock(mutex_);
    if (passphrase_) return true;
  }
  std::optional<std::string> told = "";
  if (NeedsPassphrase()) told = certificate_.passphrase ? certificate_.passphrase(keyFile()) : std::nullopt;
  if (!told) return false;
  const std::lock_guard lock(mutex_);
  passphrase_ = std::move(told);
  return true;
}

std::string ClientIdentity::Passphrase() const {
  const std::lock_guard lock(mutex_);
  return passphrase_.value_or("");
}

void ClientIdentity::ForgetPassphrase() {
  const std::lock_guard lock(mutex_);
  passphrase_.reset();
}

}  // namespace vtdirect::platform
