#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vantry_sim {

/// The hash functions that HTTP Digest asks for.
enum class DigestAlgorithm { Sha256, Md5 };

/// The word of an algorithm, as the header has it.
std::string_view WordOf(DigestAlgorithm algorithm);

/// A hash in hexadecimal digits.
std::string Hash(DigestAlgorithm algorithm, std::string_view text);

/// The members of an Authorization header of the scheme Digest, their names in lower case.
using DigestFields = std::map<std::string, std::string, std::less<>>;
/// Reads what follows the scheme. Nothing for what cannot be read.
std::optional<DigestFields> ReadDigestFields(std::string_view credentials);

/// What a client that knows the password answers (RFC 7616, qop "auth"). @param method of the request
std::string DigestResponse(DigestAlgorithm algorithm, const DigestFields& fields, std::string_view password,
                           std::string_view method);

/// Gives nonces that need no memory: a time, and proof that it was written here.
class DigestNonces {
 public:
  DigestNonces();
  [[nodiscard]] std::string Make() const;
  enum class Age { Fresh, Stale, Unknown };
  /// How old a nonce is; unknown for one that was not made here.
  [[nodiscard]] Age Judge(std::string_view nonce) const;

 private:
  [[nodiscard]] std::string Proof(std::string_view time) const;
  std::string key_;
};

}  // namespace vantry_sim
