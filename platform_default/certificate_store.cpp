#include "platform_default/certificate_store.h"

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <list>
#include <memory>
#include <mutex>
#include <string_view>
#include <system_error>
#include <utility>

namespace vtdirect::platform {
namespace {

struct StoreFreer {
  void operator()(X509_STORE* store) const { X509_STORE_free(store); }
};
using StorePointer = std::unique_ptr<X509_STORE, StoreFreer>;

/// What tells one content of a file from another.
struct FileVersion {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  timespec modified{};
  friend bool operator==(const FileVersion& a, const FileVersion& b) {
    return a.device == b.device && a.inode == b.inode && a.size == b.size &&
           a.modified.tv_sec == b.modified.tv_sec && a.modified.tv_nsec == b.modified.tv_nsec;
  }
};

struct KnownStore {
  TrustSource source;
  FileVersion version;
  StorePointer store;
};

struct KnownStores {
  std::mutex mutex;
  std::list<KnownStore> stores;  ///< the one that was used last is in front
};

/// A host has one trust, or changes it now and then.
constexpr std::size_t mostKnownStores = 4;

KnownStores& TheStores() {
  static KnownStores& stores = *new KnownStores;
  return stores;
}

FileVersion VersionOf(const std::string& file) {
  struct stat told {};
  if (file.empty() || ::stat(file.c_str(), &told) != 0) return {};
  return {told.st_dev, told.st_ino, told.st_size, told.st_mtim};
}

/// Reads what curl itself would read, and sets the flags that it sets. Null when that fails.
StorePointer ReadStore(const TrustSource& source) {
  StorePointer store(X509_STORE_new());
  if (store == nullptr) return nullptr;
  if (!source.file.empty() && X509_STORE_load_file(store.get(), source.file.c_str()) != 1) return nullptr;
  if (!source.directory.empty() && X509_STORE_load_path(store.get(), source.directory.c_str()) != 1) {
    return nullptr;
  }
  X509_STORE_set_flags(store.get(), X509_V_FLAG_TRUSTED_FIRST | X509_V_FLAG_PARTIAL_CHAIN);
  return store;
}

/// The certificates of a source, with a reference that belongs to the caller. A failure isn't remembered.
StorePointer StoreFor(const TrustSource& source) {
  const FileVersion version = VersionOf(source.file);
  KnownStores& known = TheStores();
  const std::lock_guard lock(known.mutex);
  auto found = known.stores.begin();
  while (found != known.stores.end() && !(found->source == source && found->version == version)) ++found;
  if (found == known.stores.end()) {
    StorePointer store = ReadStore(source);
    if (store == nullptr) return nullptr;
    known.stores.remove_if([&source](const KnownStore& other) { return other.source == source; });
    known.stores.push_front({source, version, std::move(store)});
    if (known.stores.size() > mostKnownStores) known.stores.pop_back();
  } else {
    known.stores.splice(known.stores.begin(), known.stores, found);
  }
  X509_STORE* store = known.stores.front().store.get();
  return StorePointer(X509_STORE_up_ref(store) == 1 ? store : nullptr);
}

}  // namespace

bool CanShareCertificates() {
  const char* used = curl_version_info(CURLVERSION_NOW)->ssl_version;
  return used != nullptr &&
         std::string_view(used) == std::string("OpenSSL/") + OpenSSL_version(OPENSSL_VERSION_STRING);
}

bool BelongsToProxy(const ssl_ctx_st* context) {
  return sk_X509_OBJECT_num(X509_STORE_get0_objects(SSL_CTX_get_cert_store(context))) > 0;
}

TrustFault FaultOfTrustFile(const std::string& file) {
  // A certificate of a file that is any larger than this has begun by then.
  constexpr std::streamsize longest = 64 * 1024;
  std::error_code error;
  std::ifstream stream(file, std::ios::binary);
  if (!stream || !std::filesystem::is_regular_file(file, error)) return TrustFault::Unreadable;
  std::string text(static_cast<std::size_t>(longest), '\0');
  stream.read(text.data(), longest);
  text.resize(static_cast<std::size_t>(stream.gcount()));
  const bool begins =
      text.find("-----BEGIN ") != std::string::npos && text.find("CERTIFICATE") != std::string::npos;
  return begins ? TrustFault::Broken : TrustFault::Empty;
}

CURLcode GiveCertificates(ssl_ctx_st* context, const TrustSource& source) {
  StorePointer store = StoreFor(source);
  // What OpenSSL says of a file that it can't read is of no use to the handshake, and would be taken for its
  // own.
  ERR_clear_error();
  if (store == nullptr) return CURLE_SSL_CACERT_BADFILE;
  SSL_CTX_set_cert_store(context, store.release());
  return CURLE_OK;
}

}  // namespace vtdirect::platform
