#include "hosts/cli/servers/netrc.h"

#include <strings.h>

#include <algorithm>

namespace vtdirect_cli {
namespace {

constexpr std::string_view blankBytes = " \t\r\n";

// Gives the words of the text one by one.
class Words {
 public:
  explicit Words(std::string_view text) : text_(text) {}

  [[nodiscard]] std::optional<std::string> Next() {
    SkipBlanksAndComments();
    if (position_ >= text_.size()) return std::nullopt;
    if (text_[position_] == '"') return Quoted();
    const std::size_t end = std::min(text_.find_first_of(blankBytes, position_), text_.size());
    std::string word(text_.substr(position_, end - position_));
    position_ = end;
    return word;
  }

  // A macro reaches to the first empty line.
  void SkipMacro() {
    const std::size_t end = text_.find("\n\n", position_);
    position_ = end == std::string_view::npos ? text_.size() : end + 2;
  }

 private:
  void SkipBlanksAndComments() {
    for (;;) {
      position_ = std::min(text_.find_first_not_of(blankBytes, position_), text_.size());
      const bool atLineStart = LineStartsHere();
      if (position_ >= text_.size() || text_[position_] != '#' || !atLineStart) return;
      position_ = std::min(text_.find('\n', position_), text_.size());
    }
  }

  [[nodiscard]] bool LineStartsHere() const {
    const std::size_t before = text_.substr(0, position_).find_last_not_of(" \t");
    return before == std::string_view::npos || text_[before] == '\n';
  }

  [[nodiscard]] std::string Quoted() {
    std::string word;
    for (++position_; position_ < text_.size() && text_[position_] != '"'; ++position_) {
      if (text_[position_] == '\\' && position_ + 1 < text_.size()) ++position_;
      word += text_[position_];
    }
    if (position_ < text_.size()) ++position_;
    return word;
  }

  std::string_view text_;
  std::size_t position_ = 0;
};

[[nodiscard]] bool Fits(const NetrcEntry& entry, std::string_view user) {
  return !entry.password.empty() && !entry.login.empty() && (user.empty() || entry.login == user);
}

}  // namespace

std::vector<NetrcEntry> ReadNetrc(std::string_view text) {
  std::vector<NetrcEntry> entries;
  Words words(text);
  while (const auto word = words.Next()) {
    if (*word == "default") {
      entries.push_back({true, {}, {}, {}});
    } else if (*word == "machine") {
      entries.push_back({false, words.Next().value_or(""), {}, {}});
    } else if (*word == "macdef") {
      words.SkipMacro();
    } else if (*word == "account") {
      static_cast<void>(words.Next());
    } else if (*word == "login" || *word == "password") {
      const std::string value = words.Next().value_or("");
      if (entries.empty()) continue;
      (*word == "login" ? entries.back().login : entries.back().password) = value;
    }
  }
  return entries;
}

std::optional<NetrcEntry> FindInNetrc(const std::vector<NetrcEntry>& entries, std::string_view host,
                                      std::string_view user) {
  const std::string wanted(host);
  for (const NetrcEntry& entry : entries) {
    const bool named = !entry.isDefault && strcasecmp(entry.machine.c_str(), wanted.c_str()) == 0;
    if (named && Fits(entry, user)) return entry;
  }
  for (const NetrcEntry& entry : entries) {
    if (entry.isDefault && Fits(entry, user)) return entry;
  }
  return std::nullopt;
}

}  // namespace vtdirect_cli
