#include "hosts/cli/servers/server_settings.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {

TEST(MergedSettings, TakeWhatTheFirstSaysAndAllElseOfTheSecond) {
  ServerSettings commandLine;
  commandLine.clientCertificate = "/mine";
  ServerSettings file;
  file.clientCertificate = "/theirs";
  file.authorityFile = "/ca";
  file.httpAddresses = "refuse";
  file.negotiate = true;
  file.maxTime = 90;
  const MergedSettings merged = MergeSettings(commandLine, file);
  EXPECT_EQ(merged.contestedKey, "client_cert");
  EXPECT_EQ(merged.settings.clientCertificate, "/mine");
  // One that they do not agree on takes none of the others away.
  EXPECT_EQ(merged.settings.authorityFile, "/ca");
  EXPECT_EQ(merged.settings.httpAddresses, "refuse");
  EXPECT_EQ(merged.settings.negotiate, true);
  EXPECT_EQ(merged.settings.maxTime, 90);
}

TEST(MergedSettings, NameNoKeyWhenBothSayTheSame) {
  ServerSettings settings;
  settings.proxy = "none";
  EXPECT_EQ(MergeSettings(settings, settings).contestedKey, "");
}

TEST(ServerSetting, ThatIsWrongNamesWhy) {
  const auto wrong = WithServerSetting({}, "http_addresses", "maybe");
  ASSERT_FALSE(wrong);
  EXPECT_EQ(wrong.failure().message, "http_addresses takes refuse, allow or upgrade");
  const auto right = WithServerSetting({}, "http_addresses", "upgrade");
  ASSERT_TRUE(right);
  EXPECT_EQ(right->httpAddresses, "upgrade");
}

}  // namespace vtdirect_cli
