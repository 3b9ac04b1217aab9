#include "simulator/wire/authenticator.h"

#include <optional>

#include "simulator/wire/authentication.h"

namespace vantry_sim {
namespace {

constexpr std::string_view realm = "vantry-sim";

std::optional<DigestAlgorithm> AlgorithmOf(const DigestFields& fields) {
  const auto found = fields.find("algorithm");
  if (found == fields.end() || found->second == "MD5") return DigestAlgorithm::Md5;
  if (found->second == "SHA-256") return DigestAlgorithm::Sha256;
  return std::nullopt;
}

}  // namespace

std::string Authenticator::UserOf(const Introduction& introduction) const {
  const std::string_view authorization = introduction.authorization;
  if (users_.open()) {
    const auto given = ReadBasic(authorization);
    return given ? given->name : std::string(openServerUser);
  }
  if (const auto token = CredentialsOf(authorization, "bearer")) return users_.NameOf(*token).value_or("");
  if (digest_) {
    const auto credentials = CredentialsOf(authorization, "digest");
    return credentials ? UserByDigest(introduction, *credentials) : std::string();
  }
  const auto given = ReadBasic(authorization);
  return given && users_.PasswordOf(given->name) == given->password ? given->name : std::string();
}

std::string Authenticator::UserByDigest(const Introduction& introduction,
                                        std::string_view credentials) const {
  const auto fields = ReadDigestFields(credentials);
  if (!fields) return {};
  const auto field = [&](std::string_view name) {
    const auto found = fields->find(name);
    return found == fields->end() ? std::string() : found->second;
  };
  const auto algorithm = AlgorithmOf(*fields);
  const auto password = users_.PasswordOf(field("username"));
  if (!algorithm || !password || field("qop") != "auth" || field("uri") != introduction.target ||
      field("realm") != realm) {
    return {};
  }
  if (nonces_.Judge(field("nonce")) != DigestNonces::Age::Fresh) return {};
  const bool right = field("response") == DigestResponse(*algorithm, *fields, *password, introduction.method);
  return right ? field("username") : std::string();
}

Response Authenticator::Challenge(std::string_view authorization) const {
  auto response = ErrorResponse(401, "unauthorized", "this server wants a user name and a password");
  const auto challenge = [&](std::string value) {
    response.headers.emplace_back("WWW-Authenticate", std::move(value));
  };
  if (digest_) {
    const auto credentials = CredentialsOf(authorization, "digest");
    const auto fields = credentials ? ReadDigestFields(*credentials) : std::nullopt;
    const auto nonce = fields ? fields->find("nonce") : DigestFields::const_iterator();
    const bool stale =
        fields && nonce != fields->end() && nonces_.Judge(nonce->second) == DigestNonces::Age::Stale;
    for (const DigestAlgorithm algorithm : {DigestAlgorithm::Sha256, DigestAlgorithm::Md5}) {
      challenge("Digest realm=\"" + std::string(realm) +
                "\", qop=\"auth\", algorithm=" + std::string(WordOf(algorithm)) + ", nonce=\"" +
                nonces_.Make() + "\"" + (stale ? ", stale=true" : ""));
    }
  } else if (!users_.onlyTokens()) {
    challenge("Basic realm=\"vantry-sim\", charset=\"UTF-8\"");
  }
  if (users_.hasTokens()) challenge("Bearer realm=\"vantry-sim\"");
  return response;
}

}  // namespace vantry_sim
