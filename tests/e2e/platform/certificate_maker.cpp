#include "tests/e2e/platform/certificate_maker.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <memory>
#include <stdexcept>

namespace vtdirect_test {
namespace {

struct Freer {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  void operator()(X509* certificate) const { X509_free(certificate); }
  void operator()(X509_EXTENSION* extension) const { X509_EXTENSION_free(extension); }
  void operator()(std::FILE* file) const { std::fclose(file); }
};
template <typename Thing>
using Owned = std::unique_ptr<Thing, Freer>;

template <typename Thing>
Owned<Thing> Having(Thing* thing, const char* what) {
  if (thing == nullptr) throw std::runtime_error(what);
  return Owned<Thing>(thing);
}

Owned<std::FILE> Open(const std::string& path, const char* mode) {
  return Having(std::fopen(path.c_str(), mode), "a file of a certificate can't be opened");
}

Owned<EVP_PKEY> ReadKey(const std::string& path) {
  const auto file = Open(path, "rb");
  return Having(PEM_read_PrivateKey(file.get(), nullptr, nullptr, nullptr), "no key");
}

Owned<X509> ReadCertificate(const std::string& path) {
  const auto file = Open(path, "rb");
  return Having(PEM_read_X509(file.get(), nullptr, nullptr, nullptr), "no certificate");
}

void Extend(X509* certificate, X509V3_CTX& context, int kind, const std::string& value) {
  const auto extension =
      Having(X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str()), "no such extension");
  X509_add_ext(certificate, extension.get(), -1);
}

void Name(X509* certificate, const std::string& name) {
  X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
}

void Date(X509* certificate, const CertificateOrder& order) {
  constexpr long day = 24L * 60 * 60;
  X509_gmtime_adj(X509_getm_notBefore(certificate), order.firstDay * day);
  X509_gmtime_adj(X509_getm_notAfter(certificate), order.lastDay * day);
}

}  // namespace

std::string MakeCertificate(const std::string& directory, const CertificateOrder& order) {
  const std::string base = directory + "/" + order.name;
  const auto key = Having(EVP_EC_gen("P-256"), "no key");
  const auto certificate = Having(X509_new(), "no certificate");
  const bool hasAuthority = !order.authority.empty();
  const std::string authority = directory + "/" + order.authority;
  const auto issuer = hasAuthority ? ReadCertificate(authority + ".pem") : nullptr;
  const auto issuerKey = hasAuthority ? ReadKey(authority + ".key") : nullptr;
  X509* issuedBy = issuer ? issuer.get() : certificate.get();

  X509_set_version(certificate.get(), X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), std::time(nullptr) % 1'000'000 + 1);
  Date(certificate.get(), order);
  X509_set_pubkey(certificate.get(), key.get());
  Name(certificate.get(), "vtdirect-test " + order.name);
  X509_set_issuer_name(certificate.get(), X509_get_subject_name(issuedBy));
  X509V3_CTX context;
  X509V3_set_ctx(&context, issuedBy, certificate.get(), nullptr, nullptr, 0);
  if (order.hosts.empty()) {
    Extend(certificate.get(), context, NID_basic_constraints, "critical,CA:TRUE");
  } else {
    Extend(certificate.get(), context, NID_subject_alt_name, order.hosts);
  }
  if (X509_sign(certificate.get(), issuerKey ? issuerKey.get() : key.get(), EVP_sha256()) == 0) {
    throw std::runtime_error("no signature");
  }
  PEM_write_X509(Open(base + ".pem", "wb").get(), certificate.get());
  PEM_write_PrivateKey(Open(base + ".key", "wb").get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
  return base + ".pem";
}

std::string DayText(int days) {
  const std::time_t time = std::time(nullptr) + days * 24L * 60 * 60;
  std::tm parts{};
  gmtime_r(&time, &parts);
  std::array<char, 32> text{};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d", &parts)};
}

}  // namespace vtdirect_test
