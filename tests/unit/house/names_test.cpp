#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/unit/house/sources.h"

// One convention of names in all folders. The linter knows it in full and takes long; this finds at once the dialects
// that creep in most easily: constants that begin with k or are named like types, and names whose words are
// separated by underscores.
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using vtdirect_house::ReadWhole;
using vtdirect_house::root;
using vtdirect_house::SourcesBelow;

bool IsWord(char byte) {
  return std::isalnum(static_cast<unsigned char>(byte)) != 0 || byte == '_';
}

// Where a literal that begins at `at` ends, after its closing quote.
std::size_t EndOfLiteral(std::string_view text, std::size_t at) {
  if (text[at] == '"' && at > 0 && text[at - 1] == 'R') {
    const auto open = text.find('(', at);
    const std::string close = ")" + std::string(text.substr(at + 1, open - at - 1)) + "\"";
    return std::min(text.find(close, open), text.size() - close.size()) + close.size();
  }
  const char quote = text[at];
  for (++at; at < text.size() && text[at] != quote; ++at) {
    if (text[at] == '\\') ++at;
  }
  return at + 1;
}

// Where a comment or a line of the preprocessor that begins at `at` ends; `at` itself when neither begins there.
std::size_t EndOfNoCode(std::string_view text, std::size_t at) {
  const auto rest = text.substr(at);
  const bool startsLine = text.find_last_not_of(" \t", at - 1) == std::string_view::npos ||
                          text[text.find_last_not_of(" \t", at - 1)] == '\n';
  if (rest.starts_with("//") || (rest.starts_with("#") && (at == 0 || startsLine))) {
    return std::min(text.find('\n', at), text.size());
  }
  if (rest.starts_with("/*")) return std::min(text.find("*/", at), text.size() - 2) + 2;
  return at;
}

// The words and signs of code, without literals, comments and the preprocessor's lines. A sign that a blank or line end
// comes before has that blank in front, which tells "a & b" from "A& b".
std::vector<std::string> Words(std::string_view text) {
  std::vector<std::string> words;
  bool blank = true;
  for (std::size_t at = 0; at < text.size();) {
    const char byte = text[at];
    const bool isQuote = byte == '"' || (byte == '\'' && (at == 0 || !IsWord(text[at - 1])));
    if (const auto end = EndOfNoCode(text, at); end != at) {
      at = end;
    } else if (isQuote) {
      at = EndOfLiteral(text, at);
      words.emplace_back("\"");
    } else if (std::isspace(static_cast<unsigned char>(byte)) != 0) {
      ++at;
      blank = true;
      continue;
    } else if (IsWord(byte)) {
      const auto begin = at;
      while (at < text.size() && (IsWord(text[at]) || text[at] == '\'')) ++at;
      words.emplace_back(text.substr(begin, at - begin));
    } else {
      words.push_back((blank ? " " : "") + std::string(1, byte));
      ++at;
    }
    blank = false;
  }
  return words;
}

bool HasInnerUnderscore(const std::string& word) {
  return std::islower(static_cast<unsigned char>(word[0])) != 0 && word.find('_') < word.size() - 1;
}

// Whether the word before this one can be the end of the type in a declaration of it.
bool FollowsType(const std::vector<std::string>& words, std::size_t at) {
  static const std::set<std::string> others{
      "return",   "else",      "case",   "new",  "delete", "throw", "goto",  "operator", "using", "class",
      "typename", "namespace", "struct", "enum", "extern", "union", "const", "sizeof",   "friend"};
  const std::string& word = words[at - 1];
  if (word == "*" || word == "&" || word == ">") {
    static const std::set<std::string> ends{"*", "&", ">"};
    return IsWord(words[at - 2][0]) || ends.count(words[at - 2]) != 0;
  }
  return IsWord(word[0]) && std::isdigit(static_cast<unsigned char>(word[0])) == 0 && others.count(word) == 0;
}

bool FollowsDeclaredName(const std::string& word) {
  static const std::set<std::string> signs{"=", ";", "(", "{", ",", ")", "["};
  return signs.count(word.substr(word[0] == ' ' ? 1 : 0)) != 0;
}

// Names of others that a source must declare to speak to them.
bool IsAnothersName(const std::string& word) {
  static const std::set<std::string> names{"max_object_size", "max_array_size", "max_key_size",
                                           "max_string_size"};
  return word.starts_with("on_") || names.count(word) != 0;
}

bool IsOverride(const std::vector<std::string>& words, std::size_t at) {
  for (; at < words.size() && words[at] != ";" && words[at] != "{" && words[at] != " {"; ++at) {
    if (words[at] == "override") return true;
  }
  return false;
}

// The name of the constant that a `constexpr` at `at` declares; empty when it declares a function.
std::string ConstantDeclared(const std::vector<std::string>& words, std::size_t at) {
  for (++at; at < words.size(); ++at) {
    const std::string sign = words[at].substr(words[at][0] == ' ' ? 1 : 0);
    if (sign == "(" || sign == ";") return {};
    if (sign == "=" || sign == "{" || sign == "[") return words[at - 1];
  }
  return {};
}

// The versions that a server must have read like types; the rest of the library knows them by these names.
bool IsConstantNamedAsAType(const std::string& word) {
  return std::isupper(static_cast<unsigned char>(word[0])) != 0 && word != "MinimumServerVersion" &&
         word != "MinimumTranslationVersion";
}

std::vector<std::string> OddNames(std::string_view text) {
  std::vector<std::string> odd;
  const std::vector<std::string> words = Words(text);
  for (std::size_t i = 3; i + 1 < words.size(); ++i) {
    const std::string& word = words[i];
    if (word == "constexpr") {
      const std::string name = ConstantDeclared(words, i);
      if (!name.empty() && IsConstantNamedAsAType(name)) odd.push_back(name);
      continue;
    }
    const bool isOfRapidJson = words[i - 1] == ":" && words[i - 3] == "rapidjson";
    if (word.size() > 1 && word[0] == 'k' && std::isupper(static_cast<unsigned char>(word[1])) != 0) {
      if (!isOfRapidJson) odd.push_back(word);
    } else if (HasInnerUnderscore(word) && FollowsType(words, i) && FollowsDeclaredName(words[i + 1])) {
      if (!IsAnothersName(word) && !IsOverride(words, i)) odd.push_back(word);
    }
  }
  return odd;
}

TEST(Names, OfConstantsBeginWithNoK) {
  EXPECT_THAT(OddNames("namespace a { constexpr int kMost = 1; int b = kMost; }"),
              ElementsAre("kMost", "kMost"));
  EXPECT_THAT(OddNames("namespace a { enum class B { kFirst }; }"), ElementsAre("kFirst"));
  EXPECT_THAT(OddNames("namespace a { int b = rapidjson::kObjectType; }"), IsEmpty());
  EXPECT_THAT(OddNames("namespace a { // kMost\n const char* b = \"kMost\"; auto c = R\"x(kMost \")x\"; }"),
              IsEmpty());
}

TEST(Names, OfConstantsBeginWithALowerCaseLetter) {
  EXPECT_THAT(OddNames("namespace a { constexpr int Most = 1; constexpr std::array<B, 2> All{1, 2}; }"),
              ElementsAre("Most", "All"));
  EXPECT_THAT(OddNames("namespace a { constexpr char Word[] = \"b\"; static constexpr auto Time = C(2); }"),
              ElementsAre("Word", "Time"));
  EXPECT_THAT(OddNames("namespace a { constexpr B most{C{1}}; constexpr int Sum(int b) { return b; } }"),
              IsEmpty());
  EXPECT_THAT(OddNames("namespace a { constexpr B(int c) : D{c} {} if constexpr (E) { F = 1; } }"),
              IsEmpty());
}

TEST(Names, HaveNoUnderscoresInside) {
  EXPECT_THAT(OddNames("namespace a { int line_end = 1; std::vector<int> all_lines; }"),
              ElementsAre("line_end", "all_lines"));
  EXPECT_THAT(OddNames("namespace a { void Send(const Text& with_body, Text* without_body); }"),
              ElementsAre("with_body", "without_body"));
  EXPECT_THAT(OddNames("namespace a { struct B { int first_line_ = 0; int first_; }; }"),
              ElementsAre("first_line_"));
}

TEST(Names, OfOthersAreUsedAsTheyAre) {
  EXPECT_THAT(
      OddNames("namespace a { int b = c & d_e; f->push_back(st.st_size); g(&fuse_h); return fuse_x(g); }"),
      IsEmpty());
  EXPECT_THAT(OddNames("namespace vtdirect_test { std::size_t b = 1'000; using value_type = int; }"),
              IsEmpty());
  EXPECT_THAT(OddNames("namespace a { bool is_readable() const override { return true; } }"), IsEmpty());
}

TEST(Names, FollowOneConvention) {
  std::size_t files = 0;
  for (const char* folder :
       {"base", "bench", "browsing", "connection", "documents", "examples", "fuzz", "hosts", "platform",
        "platform_default", "public", "server", "simulator", "tests", "translation"}) {
    for (const fs::path& path : SourcesBelow(folder)) {
      const std::string file = fs::relative(path, root).string();
      if (file == "tests/unit/house/names_test.cpp") continue;
      ++files;
      for (const std::string& name : OddNames(ReadWhole(path))) {
        ADD_FAILURE() << file << ": " << name;
      }
    }
  }
  EXPECT_GT(files, 1000U);
}

// A test that no list names is built by nobody.
TEST(Tests, AreAllBuilt) {
  for (const fs::path& path : SourcesBelow("tests")) {
    const std::string name = path.filename().string();
    if (!name.ends_with("_test.cpp")) continue;
    std::string lists;
    for (fs::path folder = path.parent_path(); folder != root; folder = folder.parent_path()) {
      lists += ReadWhole(folder / "CMakeLists.txt");
    }
    EXPECT_NE(lists.find(name), std::string::npos) << path;
  }
}

}  // namespace
