#include "hosts/cli/files/sha256.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <vector>

namespace vtdirect_cli {
namespace {

class Digest {
 public:
  Digest() : context_(EVP_MD_CTX_new(), EVP_MD_CTX_free) {
    EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr);
  }
  void Add(const void* bytes, std::size_t size) { EVP_DigestUpdate(context_.get(), bytes, size); }
  [[nodiscard]] std::string Text() {
    unsigned char bytes[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    EVP_DigestFinal_ex(context_.get(), bytes, &size);
    std::string text;
    for (unsigned i = 0; i < size; ++i) {
      const unsigned byte = bytes[i];
      for (const unsigned digit : {byte >> 4U, byte & 15U}) text += "0123456789abcdef"[digit];
    }
    return text;
  }

 private:
  std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context_;
};

}  // namespace

std::string Sha256OfFile(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return {};
  Digest digest;
  std::vector<char> buffer(std::size_t{1} << 16U);
  ssize_t count = 1;
  while (count != 0) {
    count = read(descriptor, buffer.data(), buffer.size());
    if (count < 0 && errno != EINTR) break;
    if (count > 0) digest.Add(buffer.data(), static_cast<std::size_t>(count));
  }
  close(descriptor);
  return count == 0 ? digest.Text() : std::string();
}

std::string Sha256OfText(const std::string& text) {
  Digest digest;
  digest.Add(text.data(), text.size());
  return digest.Text();
}

}  // namespace vtdirect_cli
