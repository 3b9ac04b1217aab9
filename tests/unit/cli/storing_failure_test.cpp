#include "hosts/cli/checkouts/storing_failure.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {

TEST(CommandToType, IsWhatAShellTakes) {
  EXPECT_EQ(CommandToType("verify", "//plm/a b"), "\"vtdirect verify '//plm/a b'\"");
  EXPECT_EQ(CommandToType("undo", "//plm/Anna's bench/$x"), "\"vtdirect undo '//plm/Anna'\\''s bench/$x'\"");
}

}  // namespace vtdirect_cli
