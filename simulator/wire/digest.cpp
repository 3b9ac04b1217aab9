#include "simulator/wire/digest.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <stdexcept>

#include "simulator/wire/random_text.h"

namespace vantry_sim {
namespace {

constexpr std::int64_t freshSeconds = 300;

std::string Hexadecimal(const unsigned char* bytes, unsigned size) {
  std::string text;
  for (unsigned i = 0; i < size; ++i) {
    std::array<char, 3> digits{};
    std::snprintf(digits.data(), digits.size(), "%02x", bytes[i]);
    text += digits.data();
  }
  return text;
}

std::int64_t Seconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::seconds>(now).count();
}

std::string_view Field(const DigestFields& fields, std::string_view name) {
  const auto found = fields.find(name);
  return found == fields.end() ? std::string_view() : std::string_view(found->second);
}

void SkipBlanks(std::string_view& text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t' || text.front() == ','))
    text.remove_prefix(1);
}

std::string TakeName(std::string_view& text) {
  std::string name;
  while (!text.empty() && text.front() != '=' && text.front() != ' ' && text.front() != ',') {
    const char c = text.front();
    name += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    text.remove_prefix(1);
  }
  return name;
}

/// A value in quotes, with "\" in front of a quote inside, or a bare one.
std::optional<std::string> TakeValue(std::string_view& text) {
  std::string value;
  if (!text.starts_with('"')) {
    while (!text.empty() && text.front() != ',' && text.front() != ' ') {
      value += text.front();
      text.remove_prefix(1);
    }
    return value;
  }
  for (text.remove_prefix(1); !text.empty(); text.remove_prefix(1)) {
    if (text.front() == '"') {
      text.remove_prefix(1);
      return value;
    }
    if (text.front() == '\\' && text.size() > 1) text.remove_prefix(1);
    value += text.front();
  }
  return std::nullopt;
}

}  // namespace

std::string_view WordOf(DigestAlgorithm algorithm) {
  return algorithm == DigestAlgorithm::Md5 ? "MD5" : "SHA-256";
}

std::string Hash(DigestAlgorithm algorithm, std::string_view text) {
  const EVP_MD* function = algorithm == DigestAlgorithm::Md5 ? EVP_md5() : EVP_sha256();
  std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
  unsigned size = 0;
  if (EVP_Digest(text.data(), text.size(), bytes.data(), &size, function, nullptr) != 1)
    throw std::runtime_error("cannot hash");
  return Hexadecimal(bytes.data(), size);
}

std::optional<DigestFields> ReadDigestFields(std::string_view credentials) {
  DigestFields fields;
  SkipBlanks(credentials);
  while (!credentials.empty()) {
    std::string name = TakeName(credentials);
    SkipBlanks(credentials);
    if (name.empty() || !credentials.starts_with('=')) return std::nullopt;
    credentials.remove_prefix(1);
    SkipBlanks(credentials);
    auto value = TakeValue(credentials);
    if (!value) return std::nullopt;
    fields.emplace(std::move(name), std::move(*value));
    SkipBlanks(credentials);
  }
  return fields;
}

std::string DigestResponse(DigestAlgorithm algorithm, const DigestFields& fields, std::string_view password,
                           std::string_view method) {
  std::string user(Field(fields, "username"));
  user.append(":").append(Field(fields, "realm")).append(":").append(password);
  std::string request(method);
  request.append(":").append(Field(fields, "uri"));
  std::string text = Hash(algorithm, user);
  for (const std::string_view name : {"nonce", "nc", "cnonce", "qop"})
    text.append(":").append(Field(fields, name));
  return Hash(algorithm, text + ":" + Hash(algorithm, request));
}

DigestNonces::DigestNonces() : key_(RandomHexadecimal()) {}

std::string DigestNonces::Make() const {
  const std::string time = std::to_string(Seconds());
  return time + "-" + Proof(time);
}

DigestNonces::Age DigestNonces::Judge(std::string_view nonce) const {
  const auto dash = nonce.find('-');
  const std::string_view time = nonce.substr(0, dash);
  std::int64_t seconds = 0;
  const auto [end, code] = std::from_chars(time.data(), time.data() + time.size(), seconds);
  if (dash == std::string_view::npos || code != std::errc() || end != time.data() + time.size())
    return Age::Unknown;
  if (nonce.substr(dash + 1) != Proof(time)) return Age::Unknown;
  return Seconds() - seconds <= freshSeconds ? Age::Fresh : Age::Stale;
}

std::string DigestNonces::Proof(std::string_view time) const {
  std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
  unsigned size = 0;
  HMAC(EVP_sha256(), key_.data(), static_cast<int>(key_.size()),
       reinterpret_cast<const unsigned char*>(time.data()), time.size(), bytes.data(), &size);
  return Hexadecimal(bytes.data(), size);
}

}  // namespace vantry_sim
