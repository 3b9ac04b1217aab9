#pragma once

#include <string>
#include <string_view>
#include <vector>

/// What of an exchange may be shown to others. What is not known to be harmless is not shown: values of header
/// lines and of parameters, paths that a server has made up, and bodies that are no JSON.
namespace vtdirect_cli {

/// In the place of what is not shown.
inline constexpr std::string_view hiddenText = "***";

/// A header line's value as it may be shown. Of a demand for a login the scheme stays, of an address what
/// RedactedUrl leaves.
[[nodiscard]] std::string RedactedHeader(std::string_view name, std::string_view value);

/// A URL, whole or from its path on, with the path only if it is one that clients make themselves, and the
/// values of the parameters that they send. An address that a server has made up, for a content, an upload or a
/// further page, may hold a ticket anywhere.
[[nodiscard]] std::string RedactedUrl(std::string_view url);

/// Whether a parameter of a query may be shown with its value.
[[nodiscard]] bool IsHarmlessParameter(std::string_view name);

/// The text of a JSON body, which may be cut off: without the values whose names speak of a secret, and with
/// addresses as RedactedUrl leaves them.
[[nodiscard]] std::string RedactedJson(std::string_view text);

/// The first secrets that go over the wire, so that they are found wherever else they turn up, too: in the places where
/// they belong, the functions above hide them, however many there are.
class KnownSecrets {
 public:
  /// Adds a text if it is long enough to be one: a shorter one is in many words by chance.
  void Add(std::string_view text);
  /// Adds what a header line holds that RedactedHeader hides; of a Basic login the password too.
  void AddFromHeader(std::string_view name, std::string_view value);
  /// Adds what RedactedJson hides.
  void AddFromJson(std::string_view text);

  /// A text without them.
  [[nodiscard]] std::string Hide(std::string text) const;

 private:
  std::vector<std::string> texts_;
};

}  // namespace vtdirect_cli
