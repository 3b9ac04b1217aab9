#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/house/sources.h"

// A function that needs more than five things is handed a record with names.
namespace {

namespace fs = std::filesystem;
using vtdirect_house::ReadWhole;
using vtdirect_house::root;
using vtdirect_house::SourcesBelow;

constexpr std::size_t mostParameters = 5;

/// A function's name and the number of its parameters.
using ParameterList = std::pair<std::string, std::size_t>;

std::string WithoutComments(const std::string& text) {
  return std::regex_replace(text, std::regex(R"(//[^\n]*|/\*[\s\S]*?\*/)"), "");
}

// The pieces between the commas of a list that begins after `start`; none for a list without an end.
std::vector<std::string> Pieces(const std::string& text, std::size_t start) {
  std::vector<std::string> pieces(1);
  int depth = 0;
  for (std::size_t at = start; at < text.size(); ++at) {
    const char character = text[at];
    if (character == ')' && depth == 0) return pieces;
    if (std::string("([{<").find(character) != std::string::npos) ++depth;
    if (std::string(")]}>").find(character) != std::string::npos) --depth;
    if (character == ',' && depth == 0) {
      pieces.emplace_back();
    } else {
      pieces.back() += character;
    }
  }
  return {};
}

// Whether a piece declares a parameter, and is not what a call hands over: a type, and maybe a name.
bool IsParameter(const std::string& piece) {
  static const std::regex parameter(
      R"(\s*(const\s+)?[\w:]+(<[\s\S]*>)?(\s+const)?\s*([&*]+\s*\w*|\s\w+)(\s*=[\s\S]*)?\s*)");
  return std::regex_match(piece, parameter);
}

std::vector<ParameterList> ParameterListsOf(const std::string& source) {
  const std::string text = WithoutComments(source);
  const std::regex name(R"((\w+)\()");
  std::vector<ParameterList> lists;
  for (std::sregex_iterator hit(text.begin(), text.end(), name), end; hit != end; ++hit) {
    const auto pieces = Pieces(text, static_cast<std::size_t>(hit->position() + hit->length()));
    if (pieces.empty() || !std::all_of(pieces.begin(), pieces.end(), IsParameter)) continue;
    lists.emplace_back((*hit)[1], pieces.size());
  }
  return lists;
}

// Longer lists that stay, and why.
const std::map<std::string, std::string>& Exceptions() {
  static const std::map<std::string, std::string> exceptions{
      {"Upload", "hosts call it"},
      {"UploadAsync", "hosts call it"},
      {"UploadFenletAsync", "hosts call it"},
      {"MakeRestRequest", "its shape is promised to others"},
      {"OnWrite", "libfuse calls it"},
      {"OnRename", "libfuse calls it"},
      {"Splice", "libfuse calls it"},
  };
  return exceptions;
}

TEST(ParameterLists, HaveFiveParametersAtMost) {
  std::size_t functions = 0;
  for (const char* folder : {"base", "connection", "documents", "browsing", "translation", "server", "public",
                             "simulator", "hosts"}) {
    for (const fs::path& file : SourcesBelow(folder)) {
      for (const auto& [name, count] : ParameterListsOf(ReadWhole(file))) {
        ++functions;
        EXPECT_TRUE(count <= mostParameters || Exceptions().count(name) == 1)
            << fs::relative(file, root).string() << ": " << name << " takes " << count;
      }
    }
  }
  EXPECT_GT(functions, 3000u);
}

TEST(ParameterLists, AreToldFromCalls) {
  const std::string source =
      "bool Ask(Server& server, const std::map<std::string, int>& map, std::function<bool(int, int)> call,\n"
      "         const char* name, bool flag = false, Record* out);  // not these(int a, int b)\n"
      "void Run() { Ask(server, {1, 2}, call, name.c_str(), true, &out); Wait(std::move(a), b); }\n";
  EXPECT_EQ(ParameterListsOf(source), (std::vector<ParameterList>{{"Ask", 6}}));
}

}  // namespace
