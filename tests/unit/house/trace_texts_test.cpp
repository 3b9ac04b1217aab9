#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "tests/unit/house/sources.h"

// A trace tells people what happened. The command line decides and reports by reasons, so it needs no trace
// text, and none that is worded differently can change what it does.
namespace {

namespace fs = std::filesystem;
using vtdirect_house::ReadWhole;
using vtdirect_house::root;
using vtdirect_house::SourcesBelow;

// How the texts begin that the library and its platform trace, up to the first value in them.
std::set<std::string> BeginningsOfTraces() {
  const std::regex traced(R"re(TraceType::\w+,\s*"([^"%\\]{8,}))re");
  std::set<std::string> beginnings;
  for (const char* folder : {"base", "connection", "documents", "browsing", "translation", "server", "public",
                             "platform_default"}) {
    for (const fs::path& file : SourcesBelow(folder)) {
      const std::string text = ReadWhole(file);
      for (std::sregex_iterator hit(text.begin(), text.end(), traced), end; hit != end; ++hit) {
        beginnings.insert((*hit)[1]);
      }
    }
  }
  return beginnings;
}

TEST(TracesOfTheCommandLine, AreTakenByTheLogAlone) {
  for (const fs::path& file : SourcesBelow("hosts/cli")) {
    if (file.filename() == "trace_log.cpp") continue;
    const std::string text = ReadWhole(file);
    for (const char* word : {"platform/trace.h", "SetTraceHandler", "dp::Trace"}) {
      EXPECT_EQ(text.find(word), std::string::npos) << file << " reads traces: " << word;
    }
  }
}

// What is shown is what comes in; nothing is kept of it that could be asked for.
TEST(TracesOfTheCommandLine, GiveNothingBack) {
  const std::string header = ReadWhole(root / "hosts/cli/program/trace_log.h");
  const std::regex function(R"((\w+)\([^)]*\);)");
  std::set<std::string> functions;
  for (std::sregex_iterator hit(header.begin(), header.end(), function), end; hit != end; ++hit) {
    functions.insert((*hit)[1]);
  }
  EXPECT_EQ(functions, (std::set<std::string>{"StartTraceLog", "TraceLevelsFault"}));
}

// The end of a longer word, as in the name of a type, is no word of a trace.
bool Holds(const std::string& text, const std::string& beginning) {
  for (auto at = text.find(beginning); at != std::string::npos; at = text.find(beginning, at + 1)) {
    if (at == 0 || std::isalpha(static_cast<unsigned char>(text[at - 1])) == 0) return true;
  }
  return false;
}

TEST(TracesOfTheCommandLine, HaveNoTextThatItKnows) {
  const std::set<std::string> beginnings = BeginningsOfTraces();
  EXPECT_GT(beginnings.size(), 50U);
  for (const fs::path& file : SourcesBelow("hosts/cli")) {
    const std::string text = ReadWhole(file);
    for (const std::string& beginning : beginnings) {
      EXPECT_FALSE(Holds(text, beginning)) << file << " holds \"" << beginning << "\"";
    }
  }
}

}  // namespace
