// What a server that is killed in the middle of its writes holds at its next start.
#include <signal.h>

#include <map>
#include <string>
#include <thread>

#include "simulator_process.h"
#include "writing_client.h"

namespace vantry_sim {
namespace {

TEST_F(SimulatorProcess, KilledBetweenItsWritesKeepsAllThatItHasAnsweredAndNothingHalf) {
  std::map<int, std::string> answered;
  int number = 0;
  for (const int milliseconds : {3, 10, 25, 40, 70, 110, 160, 230}) {
    Process process(Arguments());
    const int port = process.ReadyPort();
    ASSERT_GT(port, 0);
    WritingClient writer(port);
    std::thread killer([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
      process.Signal(SIGKILL);
    });
    for (;; ++number) {
      const std::string id = writer.Make(number);
      if (id.empty()) break;
      answered[number] = id;
    }
    ++number;  // the name of the unanswered one may be taken or not
    killer.join();
    EXPECT_EQ(process.Wait(), 1000 + SIGKILL);
  }
  EXPECT_GT(answered.size(), 5U);

  Process process(Arguments());
  RawClient client(process.ReadyPort());
  for (const auto& [made, id] : answered) ExpectWhole(client, id, made);
  for (int made = 0; made < number; ++made) {
    const auto found = client.Get("/servlet/rest/objects?typeId=vn.epm.EPMDocument&$filter=CADName%20eq%20'" +
                                  NameOf(made) + "'");
    ASSERT_EQ(found.status, 200);
    if (const std::string id = Member(found.body, "id"); !id.empty()) ExpectWhole(client, id, made);
  }
  for (const auto& entry : std::filesystem::directory_iterator(directory_ / "data/content")) {
    EXPECT_NE(entry.path().filename().string().rfind("incoming-", 0), 0U) << entry.path();
  }
}

TEST_F(SimulatorProcess, LongUploadIsNotHeldInMemory) {
  Process process(Arguments());
  const int port = process.ReadyPort();
  ASSERT_GT(port, 0);
  const UploadPlan plan = WritingClient(port).Plan();
  constexpr std::size_t blocks = 200;
  const std::string block(1024 * 1024, 'x');
  RawClient uploads(plan.port);
  uploads.Send(plan.head + "Content-Length: " +
               std::to_string(plan.front.size() + blocks * block.size() + plan.end.size()) + "\r\n\r\n" +
               plan.front);
  for (std::size_t i = 0; i < blocks; ++i) uploads.Send(block);
  uploads.Send(plan.end);
  EXPECT_EQ(uploads.Read(60'000).status, 200);
  EXPECT_EQ(std::filesystem::file_size(directory_ / "data/content" / plan.stream), blocks * block.size());

  const long peak = process.PeakKilobytes();
  EXPECT_GT(peak, 0);
  EXPECT_LT(peak, 100 * 1024) << "kB";
}

}  // namespace
}  // namespace vantry_sim
