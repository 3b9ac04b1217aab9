#include "hosts/cli/servers/credential_helper.h"

#include <algorithm>

#include "hosts/cli/servers/child_process.h"

namespace vtdirect_cli {
namespace {

// A value that holds a line feed would be two fields, and perhaps another server's.
[[nodiscard]] bool CanBeSent(const std::string& text) {
  return text.find('\n') == std::string::npos && text.find('\0') == std::string::npos;
}

[[nodiscard]] std::string TextOf(const HelperFields& fields) {
  std::string text;
  for (const auto& [key, value] : fields) text += key + "=" + value + "\n";
  return text + "\n";
}

[[nodiscard]] Failure Unusable(const std::string& what) {
  return {ExitCode::Failure, "the credential helper " + what};
}

}  // namespace

std::optional<HelperFields> ReadHelperAnswer(std::string_view text) {
  HelperFields fields;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.empty()) return fields;
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || line.find('\0') != std::string_view::npos) return std::nullopt;
    fields.emplace_back(line.substr(0, equals), line.substr(equals + 1));
  }
  return fields;
}

std::string ValueOf(const HelperFields& fields, std::string_view key) {
  const auto found =
      std::find_if(fields.rbegin(), fields.rend(), [key](const auto& field) { return field.first == key; });
  return found == fields.rend() ? std::string() : found->second;
}

Result<HelperFields> CredentialHelper::Get(const HelperFields& about) const {
  const auto answer = Run("get", about);
  if (!answer) return answer.failure();
  if (auto fields = ReadHelperAnswer(*answer)) return *fields;
  // What it printed may be a password, so it is not shown.
  return Unusable("has printed what is no answer; it is to print lines of KEY=VALUE");
}

std::string CredentialHelper::Store(const HelperFields& accepted) const {
  return Tell("store", accepted);
}

std::string CredentialHelper::Erase(const HelperFields& refused) const {
  return Tell("erase", refused);
}

std::string CredentialHelper::Tell(const char* action, const HelperFields& fields) const {
  const auto answer = Run(action, fields);
  return answer ? "" : answer.failure().message;
}

Result<std::string> CredentialHelper::Run(const char* action, const HelperFields& fields) const {
  if (!std::all_of(fields.begin(), fields.end(), [](const auto& field) { return CanBeSent(field.second); })) {
    return Unusable("can't be told a name or a password that holds a line feed");
  }
  const ChildResult result = RunShell(command_ + " " + action, TextOf(fields), seconds_);
  switch (result.end) {
    case ChildEnd::Ended:
      // Helpers leave with any status when they have nothing to say, so what they print counts.
      return result.output;
    case ChildEnd::TooLate:
      return Unusable("has not answered \"" + std::string(action) + "\" within " + std::to_string(seconds_) +
                      " s and was ended");
    case ChildEnd::TooMuch:
      return Unusable("prints more than an answer can hold and was ended");
    case ChildEnd::Interrupted:
      return Unusable("was interrupted");
    default:
      return Unusable("can't be started");
  }
}

}  // namespace vtdirect_cli
