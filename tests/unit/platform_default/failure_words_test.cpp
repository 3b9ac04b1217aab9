#include "platform_default/failure_words.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>

#include "tests/support/temporary_directory.h"

namespace {

using du::http::FailureDetail;
using vtdirect::platform::FailureSentence;
using vtdirect::platform::FailureSentences;
using vtdirect::platform::LimitText;
using vtdirect::platform::ReportOf;

const std::string root = VTDIRECT_SOURCE_DIRECTORY;

/// Number and name of all details, as the header has them.
std::map<int, std::string> DetailsOfHeader() {
  const std::string header = vtdirect_test::ReadFile(root + "/platform/failure_detail.h");
  const std::regex enumerator(R"(\n  (\w+) = (\d+),)");
  std::map<int, std::string> details;
  for (std::sregex_iterator found(header.begin(), header.end(), enumerator), end; found != end; ++found) {
    details.emplace(std::stoi((*found)[2]), (*found)[1]);
  }
  return details;
}

/// The sentence of each row of the page that people read.
std::map<std::string, std::string> SentencesOfPage() {
  const std::string page = vtdirect_test::ReadFile(root + "/docs/troubleshooting.md");
  const std::regex row(R"(\n\| (\d+ `\w+`) \| ([^|\n]+) \|)");
  std::map<std::string, std::string> sentences;
  for (std::sregex_iterator found(page.begin(), page.end(), row), end; found != end; ++found) {
    sentences.emplace((*found)[1], (*found)[2]);
  }
  return sentences;
}

std::string WithDots(std::string_view pattern) {
  return std::regex_replace(std::string(pattern), std::regex(R"(\{\})"), "...");
}

TEST(FailureWords, HaveOneSentenceForEachDetailAndThePageHasTheSame) {
  auto details = DetailsOfHeader();
  const auto page = SentencesOfPage();
  ASSERT_EQ(details.size(), page.size() + 1) << "a row for each detail but Unknown";
  // What is known without a sentence, and what the library finds out and not the platform.
  EXPECT_EQ(details.extract(0).mapped(), "Unknown");
  EXPECT_EQ(details.extract(static_cast<int>(FailureDetail::ForeignServer)).mapped(), "ForeignServer");
  EXPECT_EQ(details.extract(static_cast<int>(FailureDetail::AddressLeavesHttps)).mapped(),
            "AddressLeavesHttps");
  EXPECT_EQ(details.extract(static_cast<int>(FailureDetail::ContentOfOtherLength)).mapped(),
            "ContentOfOtherLength");
  for (const FailureSentence& sentence : FailureSentences()) {
    const int number = static_cast<int>(sentence.detail);
    const std::string key = std::to_string(number) + " `" + details[number] + "`";
    ASSERT_TRUE(page.contains(key)) << key;
    EXPECT_EQ(page.at(key), WithDots(sentence.pattern));
    EXPECT_EQ(details.erase(number), 1u) << "two sentences for " << key;
  }
  EXPECT_TRUE(details.empty()) << "without a sentence: " << details.begin()->second;
}

TEST(FailureWords, FillThePlacesOfASentenceInTheirOrder) {
  EXPECT_EQ(ReportOf(FailureDetail::PortRefused, {"plm.example", "8080"}).text,
            "The machine plm.example refuses connections on port 8080");
  EXPECT_EQ(ReportOf(FailureDetail::PortRefused, {"{}", "8080"}).text,
            "The machine {} refuses connections on port 8080");
  EXPECT_EQ(ReportOf(FailureDetail::PortRefused).text, "The machine  refuses connections on port ");
  EXPECT_EQ(ReportOf(FailureDetail::ClosedUnanswered, {"unused"}).text,
            "The server closed the connection without an answer");
  EXPECT_EQ(ReportOf(FailureDetail::Unknown, {"x"}).text, "");
}

TEST(FailureWords, TellLimitsInSecondsWhereTheyAreWhole) {
  EXPECT_EQ(LimitText(30'000), "30 s");
  EXPECT_EQ(LimitText(1'500), "1500 ms");
}

}  // namespace
