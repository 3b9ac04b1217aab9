#include "hosts/mount/names/shown_name.h"

#include <gtest/gtest.h>

#include "hosts/mount/names/preview_programs.h"

namespace vtdirect_mount {
namespace {

TEST(ShownName, OfADocumentIsItsPlainName) {
  EXPECT_EQ(ShownName("fork.lxz", false), "fork.lxz");
  EXPECT_EQ(ShownName("what%3f %3ca%7cb%3e.txt", false), "what? <a|b>.txt");
  EXPECT_EQ(ShownName("100%25.txt", false), "100%.txt");
}

TEST(ShownName, WithASlashStaysEscaped) {
  EXPECT_EQ(ShownName("a%2fb%3a.txt", false), "a%2fb%3a.txt");
}

TEST(ShownName, ThatReadsLikeAnEscapedOneIsEscaped) {
  // The document is called "a%2fb", and another one "a/b".
  EXPECT_EQ(ShownName("a%252fb", false), "a%252fb");
  EXPECT_EQ(ShownName("a%2fb", false), "a%2fb");
}

TEST(ShownName, OfAFolderIsNotUnescaped) {
  EXPECT_EQ(ShownName("50%3a", true), "50%3a");
  EXPECT_EQ(ShownName("Größen & Maße", true), "Größen & Maße");
}

TEST(ShownName, NeverMeansADirectoryOfItsOwn) {
  EXPECT_EQ(ShownName(".", true), "%2e");
  EXPECT_EQ(ShownName("..", true), "%2e.");
  EXPECT_EQ(ShownName(".versions", true), "%2eversions");
  EXPECT_EQ(ShownName(".versions", false), "%2eversions");
}

TEST(ShownName, ThatIsTooLongIsCutBetweenCharacters) {
  // 255 bytes are a file's longest name: 238 of it, "~" and 16 digits. The 238th byte is half of an "ä".
  const std::string start(237, 'x');
  const std::string one = ShownName(start + "ä and more to one end", false);
  EXPECT_EQ(one.substr(0, 238), start + "~");
  EXPECT_EQ(one.size(), 237U + 1 + 16);
  EXPECT_NE(one, ShownName(start + "ä and more to other end", false));
  EXPECT_EQ(ShownName(std::string(255, 'x'), false), std::string(255, 'x'));
}

TEST(NameInPath, IsTheEntryOfAShownName) {
  for (const char* entry : {"fork.lxz", "what%3f.txt", "100%25.txt", "a%2fb%3a.txt", "a%252fb"}) {
    EXPECT_EQ(NameInPath(ShownName(entry, false)), entry);
  }
}

TEST(MakesPreviews, KnowsProgramsByTheirNames) {
  EXPECT_TRUE(MakesPreviews("tumblerd"));
  EXPECT_TRUE(MakesPreviews("gdk-pixbuf-thumbnailer"));
  EXPECT_FALSE(MakesPreviews("cat"));
  EXPECT_FALSE(MakesPreviews(""));
}

}  // namespace
}  // namespace vtdirect_mount
