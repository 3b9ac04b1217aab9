#include <fcntl.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "simulator/wire/tls.h"

namespace vantry_sim {
namespace {

constexpr long day = 86'400;
/// Some clients refuse a certificate that is valid for longer.
constexpr long validSeconds = 800 * day;

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// A file that is made under another name, and gets its own when it is whole.
class NewFile {
 public:
  NewFile(std::filesystem::path path, mode_t mode) : path_(std::move(path)) {
    std::string pattern = path_.string() + ".XXXXXX";
    const int descriptor = mkostemp(pattern.data(), O_CLOEXEC);
    if (descriptor < 0)
      throw std::runtime_error("cannot write " + path_.string() + ": " + std::strerror(errno));
    temporary_ = pattern;
    fchmod(descriptor, mode);
    file_.reset(fdopen(descriptor, "w"));
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    if (!temporary_.empty()) unlink(temporary_.c_str());
  }

  [[nodiscard]] std::FILE* file() const { return file_.get(); }

  void Keep(bool whole) {
    whole = std::fclose(file_.release()) == 0 && whole;
    if (!whole || rename(temporary_.c_str(), path_.c_str()) != 0)
      throw std::runtime_error("cannot write " + path_.string());
    temporary_.clear();
  }

 private:
  std::filesystem::path path_;
  std::string temporary_;
  File file_;
};

bool Names(X509& certificate, const std::string& address) {
  return X509_check_ip_asc(&certificate, address.c_str(), 0) == 1 ||
         X509_check_host(&certificate, address.c_str(), address.size(), 0, nullptr) == 1;
}

/// Whether the two belong together, name the address, and can be used for another day.
bool AreGood(const TlsFiles& files, const std::string& address) {
  const File certificateFile(std::fopen(files.certificate.c_str(), "re"));
  const File keyFile(std::fopen(files.key.c_str(), "re"));
  if (!certificateFile || !keyFile) return false;
  const Certificate certificate(PEM_read_X509(certificateFile.get(), nullptr, nullptr, nullptr), X509_free);
  const Key key(PEM_read_PrivateKey(keyFile.get(), nullptr, nullptr, nullptr), EVP_PKEY_free);
  if (!certificate || !key || !Names(*certificate, address.empty() ? "127.0.0.1" : address)) return false;
  if (X509_check_private_key(certificate.get(), key.get()) != 1) return false;
  time_t tomorrow = std::time(nullptr) + day;
  return X509_cmp_time(X509_get0_notAfter(certificate.get()), &tomorrow) > 0;
}

void AddExtension(X509& certificate, int kind, const std::string& value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, &certificate, &certificate, nullptr, nullptr, 0);
  X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str());
  if (extension == nullptr) throw std::runtime_error("cannot make a certificate for " + value);
  X509_add_ext(&certificate, extension, -1);
  X509_EXTENSION_free(extension);
}

std::string NamesFor(const std::string& address) {
  std::string names = "DNS:localhost,IP:127.0.0.1,IP:0:0:0:0:0:0:0:1";
  if (address == "127.0.0.1" || address == "localhost" || address == "::1" || address.empty()) return names;
  const bool isNumber =
      address.find_first_not_of("0123456789.") == std::string::npos || address.find(':') != std::string::npos;
  return names + (isNumber ? ",IP:" : ",DNS:") + address;
}

Certificate MakeCertificate(EVP_PKEY& key, const std::string& address) {
  Certificate certificate(X509_new(), X509_free);
  X509& made = *certificate;
  X509_set_version(&made, X509_VERSION_3);
  std::array<unsigned char, 8> serial{};
  RAND_bytes(serial.data(), serial.size());
  std::uint64_t number = 0;
  std::memcpy(&number, serial.data(), serial.size());
  ASN1_INTEGER_set_uint64(X509_get_serialNumber(&made), number >> 1);
  X509_gmtime_adj(X509_getm_notBefore(&made), -day);
  X509_gmtime_adj(X509_getm_notAfter(&made), validSeconds);
  X509_NAME* name = X509_get_subject_name(&made);
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, reinterpret_cast<const unsigned char*>("vantry-sim"),
                             -1, -1, 0);
  X509_set_issuer_name(&made, name);
  X509_set_pubkey(&made, &key);
  AddExtension(made, NID_basic_constraints, "critical,CA:TRUE");
  AddExtension(made, NID_key_usage, "critical,digitalSignature,keyCertSign");
  AddExtension(made, NID_ext_key_usage, "serverAuth");
  AddExtension(made, NID_subject_alt_name, NamesFor(address));
  if (X509_sign(&made, &key, EVP_sha256()) == 0) throw std::runtime_error("cannot sign a certificate");
  return certificate;
}

}  // namespace

TlsFiles SelfSignedFiles(const std::string& directory, const std::string& address) {
  const std::filesystem::path place = directory;
  std::filesystem::create_directories(place);
  TlsFiles files{(place / "cert.pem").string(), (place / "key.pem").string()};
  if (AreGood(files, address)) return files;
  const Key key(EVP_EC_gen("P-256"), EVP_PKEY_free);
  if (!key) throw std::runtime_error("cannot make a key");
  const Certificate certificate = MakeCertificate(*key, address);
  NewFile keyFile(files.key, 0600);
  keyFile.Keep(PEM_write_PrivateKey(keyFile.file(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1);
  NewFile certificateFile(files.certificate, 0644);
  certificateFile.Keep(PEM_write_X509(certificateFile.file(), certificate.get()) == 1);
  return files;
}

}  // namespace vantry_sim
