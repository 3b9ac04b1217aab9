#include "hosts/mount/names/shown_name.h"

#include <gtest/gtest.h>

#include "hosts/mount/names/preview_programs.h"

namespace vtdirect_mount {
namespace {

TEST(ShownName, OfADocumentIsItsPlainName) {
  EXPECT_EQ(ShownName("fork.lxz"), "fork.lxz");
  EXPECT_EQ(ShownName("what%3f %3ca%7cb%3e.txt"), "what? <a|b>.txt");
  EXPECT_EQ(ShownName("100%25.txt"), "100%.txt");
}

TEST(ShownName, WithASlashStaysEscaped) {
  EXPECT_EQ(ShownName("a%2fb%3a.txt"), "a%2fb%3a.txt");
}

TEST(ShownName, ThatReadsLikeAnEscapedOneIsEscaped) {
  // The document is called "a%2fb", and another one "a/b".
  EXPECT_EQ(ShownName("a%252fb"), "a%252fb");
  EXPECT_EQ(ShownName("a%2fb"), "a%2fb");
}

TEST(ShownName, OfAFolderIsNotUnescaped) {
  EXPECT_EQ(ShownFolderName("50%3a"), "50%3a");
  EXPECT_EQ(ShownFolderName("Größen & Maße"), "Größen & Maße");
}

TEST(ShownName, NeverMeansADirectoryOfItsOwn) {
  EXPECT_EQ(ShownFolderName("."), "%2e");
  EXPECT_EQ(ShownFolderName(".."), "%2e.");
  EXPECT_EQ(ShownFolderName(".versions"), "%2eversions");
  EXPECT_EQ(ShownName(".versions"), "%2eversions");
}

TEST(ShownName, ThatIsTooLongIsCutBetweenCharacters) {
  // 255 bytes are a file's longest name: 238 of it, "~" and 16 digits. The 238th byte is half of an "ä".
  const std::string start(237, 'x');
  const std::string one = ShownName(start + "ä and more to one end");
  EXPECT_EQ(one.substr(0, 238), start + "~");
  EXPECT_EQ(one.size(), 237U + 1 + 16);
  EXPECT_NE(one, ShownName(start + "ä and more to other end"));
  EXPECT_EQ(ShownName(std::string(255, 'x')), std::string(255, 'x'));
}

TEST(NameInPath, IsTheEntryOfAShownName) {
  for (const char* entry : {"fork.lxz", "what%3f.txt", "100%25.txt", "a%2fb%3a.txt", "a%252fb"}) {
    EXPECT_EQ(NameInPath(ShownName(entry)), entry);
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
