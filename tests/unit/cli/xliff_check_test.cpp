#include "hosts/cli/translation/xliff_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tests/support/temporary_directory.h"

using testing::HasSubstr;

namespace vtdirect_cli {
namespace {

constexpr const char* version1Namespace = "urn:oasis:names:tc:xliff:document:1.2";

// Hands a text out in pieces of the given size.
ReadFunction Pieces(std::string text, std::size_t size) {
  return [text = std::move(text), size, at = std::size_t{0}](char* buffer, std::size_t room) mutable {
    const std::size_t count = std::min({size, room, text.size() - at});
    std::memcpy(buffer, text.data() + at, count);
    at += count;
    return static_cast<std::ptrdiff_t>(count);
  };
}

// "" when it is fit, else "LINE: WHAT". The same whatever the pieces.
std::string Check(const std::string& text, const std::string& language = "en") {
  const auto shown = [](const std::optional<XliffFault>& fault) {
    return fault ? std::to_string(fault->line) + ": " + fault->what : std::string();
  };
  const std::string whole = shown(CheckXliff(Pieces(text, 65536), language));
  EXPECT_EQ(shown(CheckXliff(Pieces(text, 1), language)), whole);
  return whole;
}

std::string Version12(const std::string& content) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xliff version=\"1.2\" xmlns=\"" +
         std::string(version1Namespace) + "\">\n" + content + "\n</xliff>\n";
}

std::string Version2(const std::string& version, const std::string& space, const std::string& language) {
  return "<xliff version=\"" + version + "\" xmlns=\"urn:oasis:names:tc:xliff:document:" + space + "\"" +
         language +
         ">\n<file id=\"f\"><unit id=\"u\"><segment><source>a</source></segment></unit></file></xliff>";
}

std::string Utf16(const std::string& ascii) {
  std::string out = "\xFF\xFE";
  for (const char c : ascii) {
    out += c;
    out += '\0';
  }
  return out;
}

constexpr const char* fileElement =
    "<file original=\"a\" source-language=\"en\" datatype=\"xml\"><body/></file>";

// Makes a file of pieces, up to a size or an empty piece, and counts what was asked for.
class Endless {
 public:
  Endless(std::string head, std::function<std::string(std::size_t)> piece, std::size_t size)
      : pending_(std::move(head)), piece_(std::move(piece)), size_(size) {}

  [[nodiscard]] ReadFunction Reader() {
    return [this](char* buffer, std::size_t room) {
      while (!ended_ && pending_.size() < room && read_ + pending_.size() < size_) Grow();
      const std::size_t count = std::min(pending_.size(), room);
      std::memcpy(buffer, pending_.data(), count);
      pending_.erase(0, count);
      read_ += count;
      return static_cast<std::ptrdiff_t>(count);
    };
  }
  [[nodiscard]] std::size_t read() const { return read_; }

 private:
  void Grow() {
    const std::string piece = piece_(number_++);
    ended_ = piece.empty();
    pending_ += piece;
  }

  std::string pending_;
  std::function<std::string(std::size_t)> piece_;
  std::size_t size_;
  std::size_t read_ = 0;
  std::size_t number_ = 0;
  bool ended_ = false;
};

constexpr std::size_t hundredMegabytes = 100'000'000;

// That a file of a hundred megabytes is refused before a third of it was read, for the reason given.
void ExpectRefusedEarly(const std::string& head, const std::function<std::string(std::size_t)>& piece,
                        const std::string& reason) {
  Endless file(head, piece, hundredMegabytes);
  const auto fault = CheckXliff(file.Reader(), "en");
  ASSERT_TRUE(fault);
  EXPECT_THAT(fault->what, HasSubstr(reason));
  EXPECT_LT(file.read(), hundredMegabytes / 3);
}

const std::string openDocument =
    "<xliff version=\"1.2\" xmlns=\"" + std::string(version1Namespace) + "\">" + fileElement;

}  // namespace

TEST(XliffCheck, TakesVersion12) {
  EXPECT_EQ(Check(Version12(fileElement)), "");
  EXPECT_EQ(Check(Version12(std::string(fileElement) + fileElement)), "");
  EXPECT_EQ(Check("<x:xliff xmlns:x='" + std::string(version1Namespace) +
                  "' version='1.2'><x:file source-language='en'/>" + "</x:xliff>"),
            "");
}

TEST(XliffCheck, TakesVersions20To22) {
  EXPECT_EQ(Check(Version2("2.0", "2.0", " srcLang=\"en\"")), "");
  EXPECT_EQ(Check(Version2("2.1", "2.0", " srcLang=\"en\"")), "");
  EXPECT_EQ(Check(Version2("2.1", "2.1", " srcLang=\"en\"")), "");
  EXPECT_EQ(Check(Version2("2.2", "2.2", " srcLang=\"en\"")), "");
}

// A file whose source text holds these bytes, in an encoding.
std::string Encoded(const std::string& encoding, const std::string& bytes, const std::string& quote = "\"") {
  return "<?xml version=" + quote + "1.0" + quote + " encoding=" + quote + encoding + quote +
         "?>\n<xliff version=\"1.2\" xmlns=\"" + version1Namespace +
         "\">\n<file original=\"a\" source-language=\"en\" datatype=\"xml\"><body><trans-unit "
         "id=\"1\"><source>" +
         bytes + "</source></trans-unit></body></file>\n</xliff>\n";
}

TEST(XliffCheck, TakesEveryEncodingThatTheMachineKnows) {
  EXPECT_EQ(Check(Encoded("windows-1252",
                          "Gr\xF6\xDF"
                          "e 5 \x80 \x96 \x93x\x94")),
            "");
  EXPECT_EQ(Check(Encoded("Windows-1250", "\x8Aroub", "'")), "");
  EXPECT_EQ(Check(Encoded("ISO-8859-15", "5 \xA4")), "");
  EXPECT_EQ(Check(Encoded("KOI8-R", "\xD7\xC9\xCE\xD4")), "");
  EXPECT_EQ(Check(Encoded("Shift_JIS", "\x83\x74\x83\x48\x81\x5B\x83\x4E \x95\x5C")), "")
      << "with a byte of \"\\\"";
  EXPECT_EQ(Check(Encoded("EUC-JP", "\xA5\xD5\x8F\xB0\xA1")), "");
  EXPECT_EQ(Check(Encoded("GB18030", "\xB2\xE6 \x81\x39\xEF\x30")), "") << "with one of four bytes";
  EXPECT_EQ(Check(Encoded("Big5", "\xA4\x65")), "");
  EXPECT_EQ(Check(Encoded("EUC-KR", "\xC6\xF7\xC5\xA9")), "");
  EXPECT_EQ(Check(Encoded("ISO-2022-JP", "\x1B$B%U%)!<%/\x1B(B")), "");
}

TEST(XliffCheck, TakesTheFormsOfUnicodeByEveryNameThatTheMachineKnows) {
  for (const char* name : {"UTF-16", "utf-16", "Unicode", "UCS-2"}) {
    EXPECT_EQ(Check(Utf16(Encoded(name, "x"))), "") << name;
  }
  EXPECT_EQ(Check("\xEF\xBB\xBF" + Encoded("utf8", "\xC3\xBC")), "");
  EXPECT_EQ(Check(Encoded("utf8", "\xC3\xBC")), "");
  std::string wide("\xFF\xFE\0\0", 4);
  for (const char c : Encoded("UTF-32", "x")) wide += c + std::string(3, '\0');
  EXPECT_EQ(Check(wide), "");
}

TEST(XliffCheck, RefusesAFileThatIsMarkedAsAnotherThanItSays) {
  EXPECT_NE(Check("\xEF\xBB\xBF" + Encoded("windows-1252", "x")), "");
  EXPECT_NE(Check(Utf16(Encoded("windows-1252", "x"))), "");
  EXPECT_NE(Check(Utf16(Encoded("no-such-encoding", "x"))), "");
}

TEST(XliffCheck, RefusesBytesThatAreNoneOfTheEncoding) {
  EXPECT_THAT(Check(Encoded("windows-1252", "a\x81z")), HasSubstr("3: "));
  EXPECT_THAT(Check(Encoded("Shift_JIS", "a\x83")), HasSubstr("3: ")) << "half of a character";
  const std::string whole = Encoded("EUC-JP", "x");
  EXPECT_NE(Check(whole + "<!--\xA5"), "") << "at the end of the file";
  EXPECT_THAT(Check(Encoded("no-such-encoding", "x")), HasSubstr("its encoding can't be read"));
}

TEST(XliffCheck, TakesTheEncodingsOfXml) {
  EXPECT_EQ(Check("\xEF\xBB\xBF" + Version12(fileElement)), "");
  EXPECT_EQ(Check(Utf16("<xliff version='1.2' xmlns='" + std::string(version1Namespace) + "'>" + fileElement +
                        "</xliff>")),
            "");
  EXPECT_EQ(Check("<?xml version='1.0' encoding='ISO-8859-1'?><xliff version='1.2' xmlns='" +
                  std::string(version1Namespace) + "'><!-- \xFC -->" + fileElement + "</xliff>"),
            "");
  EXPECT_THAT(Check("<?xml version='1.0' encoding='EBCDIC-1'?><xliff/>"),
              HasSubstr("its encoding can't be read"));
  EXPECT_THAT(Check(Version12("<file source-language=\"en\">\xFC</file>")),
              testing::StartsWith("3: it is no "
                                  "well-formed XML"));
}

TEST(LanguagesFit, WhenTheyAreTheSameAsFarAsBothGo) {
  for (const auto& [one, other] : {std::pair{"en", "en"},
                                   {"EN", "en"},
                                   {"en_US", "en-us"},
                                   {"en", "en-US"},
                                   {"zh-Hans-CN", "zh_hans"}}) {
    EXPECT_TRUE(LanguagesFit(one, other)) << one << other;
    EXPECT_TRUE(LanguagesFit(other, one)) << one << other;
  }
  for (const auto& [one, other] : {std::pair{"en", "de"},
                                   {"en-GB", "en-US"},
                                   {"en", "eng"},
                                   {"en", "e"},
                                   {"en-U", "en-US"},
                                   {"en", ""}}) {
    EXPECT_FALSE(LanguagesFit(one, other)) << one << other;
    EXPECT_FALSE(LanguagesFit(other, one)) << one << other;
  }
}

TEST(XliffCheck, NamesTheLineOfTheFirstSourceLanguageThatDoesNotFit) {
  const std::string german = "<file original='b'\n  source-language='de'/>";
  EXPECT_EQ(Check(Version12(std::string(fileElement) + "\n" + german)),
            "4: its <file> has the source language \"de\" (source-language), and --language is \"en\"");
  EXPECT_EQ(Check(Version12(fileElement), "en-US"), "");
  EXPECT_EQ(Check("\n" + Version2("2.0", "2.0", " srcLang=\"en-GB\""), "en-US"),
            "2: its <xliff> has the source language \"en-GB\" (srcLang), and --language is \"en-US\"");
}

TEST(XliffCheck, WantsASourceLanguage) {
  EXPECT_EQ(Check(Version12("<file original='a'/>")),
            "3: its <file> tells no source language (source-language)");
  EXPECT_EQ(Check(Version12(std::string(fileElement) + "<file source-language=''/>")),
            "3: its <file> tells no source language (source-language)");
  EXPECT_EQ(Check(Version2("2.0", "2.0", "")), "1: its <xliff> tells no source language (srcLang)");
}

TEST(XliffCheck, WantsAFileRightInTheRoot) {
  EXPECT_EQ(Check(Version12("")), "4: it has no <file> in its <xliff>");
  EXPECT_EQ(Check(Version12("<group>" + std::string(fileElement) + "</group>")),
            "4: it has no <file> in its <xliff>");
  EXPECT_EQ(Check(Version12("<file xmlns='urn:other' source-language='en'/>")),
            "4: it has no <file> in its <xliff>");
  EXPECT_EQ(Check("<xliff version='2.0' srcLang='en' xmlns='urn:oasis:names:tc:xliff:document:2.0'/>"),
            "1: it has no <file> in its <xliff>");
}

TEST(XliffCheck, WantsTheRootAndNamespaceAndVersionOfXliff) {
  EXPECT_EQ(Check("\n<tmx version='1.4'><file source-language='en'/></tmx>"),
            "2: it is no XLIFF file: its outermost element is \"tmx\" and not \"xliff\"");
  EXPECT_EQ(
      Check("<xliff version='1.2'>" + std::string(fileElement) + "</xliff>"),
      "1: its <xliff> has no namespace; that of XLIFF 1.2 is \"urn:oasis:names:tc:xliff:document:1.2\"");
  EXPECT_EQ(Check("<xliff version='1.2' xmlns='urn:x'>" + std::string(fileElement) + "</xliff>"),
            "1: its <xliff> has the namespace \"urn:x\"; that of XLIFF 1.2 is "
            "\"urn:oasis:names:tc:xliff:document:1.2\"");
  EXPECT_THAT(Check(Version2("2.0", "1.2", " srcLang='en'")), HasSubstr("that of XLIFF 2.0 is"));
  EXPECT_THAT(Check(Version2("2.0", "2.1", " srcLang='en'")), HasSubstr("that of XLIFF 2.0 is"));
  EXPECT_EQ(Check(Version2("1.1", "1.1", "")),
            "1: its XLIFF version is \"1.1\"; 1.2 and 2.0 to 2.2 are taken");
  EXPECT_EQ(Check("<xliff xmlns='" + std::string(version1Namespace) + "'>" + fileElement + "</xliff>"),
            "1: its <xliff> tells no version; 1.2 and 2.0 to 2.2 are taken");
}

TEST(XliffCheck, CutsWhatItQuotes) {
  EXPECT_EQ(Check("<xliff version='" + std::string(59, 'v') + "\xC3\xBC" + "v'/>"),
            "1: its XLIFF version is \"" + std::string(59, 'v') + "...\"; 1.2 and 2.0 to 2.2 are taken");
}

TEST(XliffCheck, TellsAFileThatWasCutOff) {
  const std::string whole = Version12("<file source-language='en'>\n<body><![CDATA[ text ]]></body></file>");
  const auto cut = [&whole](const char* mark) { return Check(whole.substr(0, whole.find(mark))); };
  EXPECT_THAT(cut("</body>"), testing::AllOf(testing::StartsWith("4: "), HasSubstr("cut off")));
  EXPECT_THAT(cut("ody>"), testing::AllOf(testing::StartsWith("4: "), HasSubstr("cut off")));
  EXPECT_THAT(cut("text"), testing::AllOf(testing::StartsWith("4: "), HasSubstr("cut off")));
  EXPECT_THAT(cut("xliff>"), HasSubstr("cut off"));
  EXPECT_EQ(Check(whole.substr(0, whole.find("</xliff>") + 8)), "");
  // A character that was cut in two.
  EXPECT_THAT(Check("<xliff version='1.2' xmlns='" + std::string(version1Namespace) + "'>\xC3"),
              HasSubstr("cut off"));
}

TEST(XliffCheck, TellsWhatIsNoXml) {
  EXPECT_THAT(Check(""), testing::StartsWith("1: it is empty"));
  EXPECT_THAT(Check("\n\n"), testing::StartsWith("3: it is empty"));
  EXPECT_THAT(Check("Dear server,\n"), testing::StartsWith("1: it is no XML file"));
  EXPECT_THAT(Check("%PDF-1.7\n\x80\x81"), testing::StartsWith("1: it is no XML file"));
  EXPECT_THAT(Check(std::string("\x7F"
                                "ELF\0\0",
                                6)),
              testing::StartsWith("1: it is no XML file"));
  EXPECT_THAT(Check(std::string(1000, '\0')), testing::StartsWith("1: it is no XML file"));
}

TEST(XliffCheck, TellsXmlThatIsNotWellFormed) {
  EXPECT_EQ(Check(Version12("<file source-language='en'><a>\n</b></file>")),
            "4: it is no well-formed XML (mismatched tag)");
  EXPECT_THAT(Check(Version12("<file source-language='en' source-language='de'/>")),
              testing::StartsWith("3: it is no well-formed XML"));
  EXPECT_THAT(Check(Version12(fileElement) + "<more/>"), testing::StartsWith("5: it is no well-formed XML"));
  EXPECT_THAT(Check(Version12(std::string("<file source-language='en'>\0</file>", 35))),
              testing::StartsWith("3: it is no well-formed XML"));
  EXPECT_THAT(Check(Version12("<file source-language='en'>&who;</file>")),
              testing::StartsWith("3: it is no well-formed XML"));
}

TEST(XliffCheck, RefusesDocumentTypesAndSoEveryEntity) {
  const std::string bomb =
      "<?xml version='1.0'?>\n<!DOCTYPE xliff [<!ENTITY a 'ha'><!ENTITY b "
      "'&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'>]>\n";
  EXPECT_EQ(Check(bomb + "<xliff>&b;</xliff>"),
            "2: it has a document type declaration (<!DOCTYPE>), which XLIFF does without");
  EXPECT_THAT(Check("<!DOCTYPE xliff SYSTEM 'file:///etc/passwd'><xliff/>"), HasSubstr("document type"));
}

TEST(XliffCheck, EndsWithElementsNestedTooDeep) {
  const std::string start =
      "<xliff version='1.2' xmlns='" + std::string(version1Namespace) + "'><file source-language='en'>";
  const auto nested = [&start](int depth) {
    std::string text = start;
    for (int i = 0; i < depth; ++i) text += "<g>";
    for (int i = 0; i < depth; ++i) text += "</g>";
    return text + "</file></xliff>";
  };
  EXPECT_EQ(Check(nested(998)), "");
  EXPECT_EQ(Check(nested(999)), "1: its elements are nested more than 1000 deep");
  ExpectRefusedEarly(
      start, [](std::size_t) { return "<g>"; }, "nested more than 1000 deep");
}

TEST(XliffCheck, EndsWithWhatWouldTakeMemoryWithoutEnd) {
  const std::string reason = "too long a tag, or too many different names";
  const auto filling = [](std::size_t) { return std::string(1000, 'a'); };
  ExpectRefusedEarly(openDocument + "<file source-language='", filling, reason);
  ExpectRefusedEarly(openDocument + "<", filling, reason);
  ExpectRefusedEarly(openDocument + "<!--", filling, reason);
  ExpectRefusedEarly(
      openDocument, [](std::size_t number) { return "<n" + std::to_string(number) + "/>"; }, reason);
  ExpectRefusedEarly(
      openDocument, [](std::size_t number) { return "<n a" + std::to_string(number) + "=''/>"; }, reason);
}

TEST(XliffCheck, ReadsAnyAmountOfText) {
  constexpr std::size_t pieces = 100'000;
  Endless file(
      "<xliff version='1.2' xmlns='" + std::string(version1Namespace) + "'><file source-language='en'>",
      [](std::size_t number) {
        if (number < pieces) return std::string(1000, 'a');
        return std::string(number == pieces ? "</file></xliff>" : "");
      },
      2 * hundredMegabytes);
  const auto fault = CheckXliff(file.Reader(), "en");
  EXPECT_EQ(fault ? fault->what : "", "");
  EXPECT_GT(file.read(), hundredMegabytes);
}

TEST(XliffCheck, TellsAFileThatCanNotBeRead) {
  EXPECT_TRUE(CheckXliff([](char*, std::size_t) { return std::ptrdiff_t{-1}; }, "en"));
  const vtdirect_test::TemporaryDirectory directory;
  const auto missing = CheckXliffFile(directory.File("none"), "en");
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.failure().code, ExitCode::LocalFile);
  EXPECT_EQ(missing.failure().message,
            "cannot read " + directory.File("none") + ": No such file or directory");
  const auto folder = CheckXliffFile(directory.path(), "en");
  ASSERT_FALSE(folder);
  EXPECT_EQ(folder.failure().message, "cannot read " + directory.path() + ": Is a directory");
}

TEST(XliffCheck, ReadsALocalFile) {
  const vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::WriteFile(directory.File("a.xlf"), Version12(fileElement));
  const auto fit = CheckXliffFile(directory.File("a.xlf"), "en");
  ASSERT_TRUE(fit);
  EXPECT_FALSE(*fit);
  const auto other = CheckXliffFile(directory.File("a.xlf"), "fr");
  ASSERT_TRUE(other && *other);
  EXPECT_EQ((*other)->line, 3U);
}

}  // namespace vtdirect_cli
