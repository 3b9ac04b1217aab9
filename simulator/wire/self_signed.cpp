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

constexpr const char* ownName = "vantry-sim";
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

  void Close(bool whole) {
    whole = std::fclose(file_.release()) == 0 && whole;
    if (!whole) throw std::runtime_error("cannot write " + path_.string());
  }

  void Keep() {
    if (rename(temporary_.c_str(), path_.c_str()) != 0)
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

/// Nobody is asked for the passphrase of a locked key.
int NoPassphrase(char*, int, int, void*) {
  return 0;
}

[[noreturn]] void Refuse(const std::string& path, const std::string& why) {
  throw std::runtime_error(path + " " + why + "; name another directory, or move it away");
}

/// @return null if there is none. @throws std::runtime_error if it cannot be read
File OpenIfThere(const std::string& path) {
  File file(std::fopen(path.c_str(), "re"));
  if (!file && errno != ENOENT) Refuse(path, std::string("cannot be read: ") + std::strerror(errno));
  return file;
}

/// What is in the directory; null for a file that is not there.
struct Found {
  Certificate certificate{nullptr, X509_free};
  Key key{nullptr, EVP_PKEY_free};
};

Found Read(const TlsFiles& files) {
  Found found;
  if (const File file = OpenIfThere(files.certificate)) {
    found.certificate.reset(PEM_read_X509(file.get(), nullptr, NoPassphrase, nullptr));
    if (!found.certificate) Refuse(files.certificate, "is no certificate");
  }
  if (const File file = OpenIfThere(files.key)) {
    found.key.reset(PEM_read_PrivateKey(file.get(), nullptr, NoPassphrase, nullptr));
    if (!found.key) Refuse(files.key, "is no private key that can be used without a passphrase");
  }
  return found;
}

/// Whether the two belong together, name the address, and can be used for another day.
bool AreGood(const Found& found, const std::string& address) {
  if (!found.certificate || !found.key) return false;
  X509& certificate = *found.certificate;
  if (!Names(certificate, address.empty() ? "127.0.0.1" : address)) return false;
  if (X509_check_private_key(&certificate, found.key.get()) != 1) return false;
  time_t tomorrow = std::time(nullptr) + day;
  return X509_cmp_time(X509_get0_notAfter(&certificate), &tomorrow) > 0;
}

/// Whether it was made here: signed by itself, for nobody but the simulator.
bool IsOwn(X509& certificate) {
  const X509_NAME* subject = X509_get_subject_name(&certificate);
  if (X509_NAME_cmp(subject, X509_get_issuer_name(&certificate)) != 0) return false;
  if (X509_NAME_entry_count(subject) != 1) return false;
  const ASN1_STRING* name = X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, 0));
  const std::string text(reinterpret_cast<const char*>(ASN1_STRING_get0_data(name)),
                         static_cast<std::size_t>(ASN1_STRING_length(name)));
  return text == ownName;
}

/// What others have made is used if it is good, and never replaced.
void RequireReplaceable(const TlsFiles& files, const Found& found) {
  if (found.certificate && !IsOwn(*found.certificate))
    Refuse(files.certificate,
           "does not do for this address, or not with the key beside it, and was not made by vantry-sim");
  if (found.key && !found.certificate) Refuse(files.key, "is there without its certificate");
  if (found.key && X509_check_private_key(found.certificate.get(), found.key.get()) != 1)
    Refuse(files.key, "does not fit the cert.pem beside it (once both are removed, both are made anew)");
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
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, reinterpret_cast<const unsigned char*>(ownName), -1,
                             -1, 0);
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
  const Found found = Read(files);
  if (AreGood(found, address)) return files;
  RequireReplaceable(files, found);
  const Key key(EVP_EC_gen("P-256"), EVP_PKEY_free);
  if (!key) throw std::runtime_error("cannot make a key");
  const Certificate certificate = MakeCertificate(*key, address);
  NewFile certificateFile(files.certificate, 0644);
  certificateFile.Close(PEM_write_X509(certificateFile.file(), certificate.get()) == 1);
  NewFile keyFile(files.key, 0600);
  keyFile.Close(PEM_write_PrivateKey(keyFile.file(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1);
  // Wherever this is cut off, a certificate without a key is left, which is made anew. A key alone, or one that
  // fits no certificate, would be somebody's.
  if (unlink(files.key.c_str()) != 0 && errno != ENOENT)
    throw std::runtime_error("cannot replace " + files.key + ": " + std::strerror(errno));
  certificateFile.Keep();
  keyFile.Keep();
  return files;
}

}  // namespace vantry_sim
