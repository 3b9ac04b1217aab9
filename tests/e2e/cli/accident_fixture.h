#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/e2e/cli/accident.h"
#include "tests/e2e/cli/checkout_fixture.h"

namespace vtdirect_test {

/// Lets one request after the other of a command meet with an accident, each time from the same beginning: of
/// the server, and of what the program has kept.
class AccidentTest : public CheckoutTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  /// Remembers the beginning: to be called once, when all is prepared.
  void KeepBeginning();
  /// Goes back to it.
  void GoBackToBeginning();

  /// Runs a command with the accident at each of its requests, and calls `check` after each. Ends with the first
  /// failure.
  void MeetAccident(const std::vector<std::string>& words, Accident accident,
                    const std::function<void()>& check);
  /// Does it with each accident; at a request that only reads with those four that stand for all.
  void MeetEveryAccident(const std::vector<std::string>& words, const std::function<void()>& check);

  /// Settles what is open. Expects that nothing stays so.
  void ExpectRecovery();
  /// The entries of the journal.
  [[nodiscard]] std::string OpenEntries() const;
  /// Leaves an entry in the journal, as a run does that was killed.
  void LeaveOpen(const std::string& step, const std::string& address, const std::string& uid);

  ProcessResult result_;     ///< of the command that met with an accident
  ProcessResult recovered_;  ///< of `recover` after it

 private:
  void Meet(const std::vector<std::string>& words,
            const std::function<std::vector<Accident>(bool isWrite)>& accidentsOf,
            const std::function<void()>& check);
  void RemoveWhatKilledProgramsLeave();
};

}  // namespace vtdirect_test
