#include "hosts/cli/checkouts/checkout_words.h"

#include <gtest/gtest.h>
#include <vtdirect/vt_direct_manager.h>

namespace vtdirect_cli {

TEST(CheckoutWords, TellEveryState) {
  EXPECT_STREQ(CheckoutWord(VtDirectManager::CheckoutNone), "none");
  EXPECT_STREQ(CheckoutWord(VtDirectManager::CheckoutByUserUnrecorded), "by-you");
  EXPECT_STREQ(CheckoutWord(VtDirectManager::CheckoutByOther), "by-other");
  EXPECT_STREQ(CheckoutWord(VtDirectManager::CheckoutInTempWorkspace), "temporary-workspace");
  EXPECT_STREQ(CheckoutWord(VtDirectManager::CheckoutInWorkspace), "workspace");
  EXPECT_STREQ(CheckoutWord(VtDirectManager::CheckoutStatusFailed), "unknown");
  EXPECT_STREQ(CheckoutWord(VtDirectManager::CheckoutUnsupported), "unsupported");
  EXPECT_STREQ(CheckoutWord(VtDirectManager::CheckoutNotPossible), "not-possible");
}

TEST(CheckoutWords, CallAnAddressWithoutAServerUnknown) {
  EXPECT_STREQ(CheckoutWord(ReadCheckoutState("//nowhere/x").status), "unknown");
}

}  // namespace vtdirect_cli
