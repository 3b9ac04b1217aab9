#include "hosts/cli/failures/exit_code.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {

TEST(ExitCodes, WeighAServerThatCannotBeUsedAboveAnObjectThatIsNotThere) {
  EXPECT_EQ(Worse(ExitCode::Ok, ExitCode::Outdated), ExitCode::Outdated);
  EXPECT_EQ(Worse(ExitCode::NotFound, ExitCode::Outdated), ExitCode::NotFound);
  EXPECT_EQ(Worse(ExitCode::NotFound, ExitCode::CannotConnect), ExitCode::CannotConnect);
  EXPECT_EQ(Worse(ExitCode::CannotConnect, ExitCode::AuthenticationRefused), ExitCode::CannotConnect);
  EXPECT_EQ(Worse(ExitCode::ServerNotListed, ExitCode::Ok), ExitCode::ServerNotListed);
  EXPECT_EQ(Worse(ExitCode::Interrupted, ExitCode::CannotConnect), ExitCode::Interrupted);
}

TEST(ExitCodes, HaveAWeightEach) {
  for (const ExitCodeRow& row : ExitCodes()) {
    EXPECT_EQ(Worse(row.code, ExitCode::Ok), row.code) << row.name;
    EXPECT_EQ(Worse(row.code, ExitCode::Interrupted), ExitCode::Interrupted) << row.name;
  }
}

}  // namespace vtdirect_cli
