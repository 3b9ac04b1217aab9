#include "tests/wire/public/uploads/upload_walk.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;

}  // namespace

UploadWalkTest::UploadWalkTest() {
  SetAppConfig(ConfigRegisterAuthAppVersion, "300");
}

Ending UploadWalkTest::GoesOn(const Flow& flow, std::size_t from, const std::string& result,
                              const Traces& traces) {
  Ending ending{result, traces};
  for (std::size_t index = from; index < flow.size(); ++index) {
    ending.answers.push_back(flow[index].answer);
    ending.lines.push_back(flow[index].line);
  }
  return ending;
}

Ending UploadWalkTest::GoesOnWithoutNonce(const Flow& flow, std::size_t nonceAt, const std::string& result,
                                          const Traces& traces) {
  Ending ending = GoesOn(flow, nonceAt + 1, result, traces);
  ending.answers.insert(ending.answers.begin() + 1, walkedNonce);
  ending.lines.insert(ending.lines.begin() + 1, Get(noncePath));
  return ending;
}

Flow UploadWalkTest::TransferFlow() const {
  Flow flow{{Get(noncePath), walkedNonce},
            {Post(factoryPath), {200, Ticket(Files())}},
            {uploadLine, {200, Receipts(Files())}}};
  if (!GetParam().RegistersNothing()) flow.push_back({Post(registerPath), {204, ""}});
  return flow;
}

std::vector<Step> UploadWalkTest::TransferSteps(const Flow& flow, std::size_t first,
                                                const std::string& success, const TransferTraces& traces,
                                                const TransferFailure& failure) const {
  const Traces whole = Join(traces.before, traces.after);
  const auto failed = [&](const char* text) {
    return Ending{Failed(failure.code), Join(traces.before, {Error(text), failure.end})};
  };
  const Ending withoutNonce = GoesOnWithoutNonce(flow, first, success, whole);
  const Ending refusedPost = failed("Failed to update document with error {error}\n");
  const Ending refusedUpload = failed("Failed to upload document with error {error}\n");
  std::vector<Step> steps;
  const auto add = [&](const Ending& refused, const Ending& unreadable) {
    const WalkedRequest& request = flow[first + steps.size()];
    steps.push_back({request.line, request.answer, refused, unreadable});
  };
  add(withoutNonce, withoutNonce);
  add(refusedPost, refusedPost);
  add(refusedUpload, refusedUpload);
  if (!GetParam().RegistersNothing()) {
    const Ending unregistered = GoesOn(flow, first + 4, success, whole);
    add(unregistered, unregistered);
  }
  add(refusedPost, refusedPost);
  return steps;
}

Ending UploadWalkTest::NotProbed() {
  return {NotPrepared("1 (null);"),
          {MissingServices()[1], Error("Failed to connect to server path https://plm.example/vt/\n")},
          {{500, "boom"}},
          {Get("servlet/rest/v1/contexts")}};
}

void UploadWalkTest::Walk(const std::vector<Step>& steps, const std::string& address, bool checkIn,
                          std::size_t first) {
  const auto leftovers = [this] {
    Lines names = directory.Entries();
    std::erase(names, "local");
    return names;
  };
  WalkFailuresFrom({first, steps}, transport, trace, leftovers, [&] {
    UpdateServerList({});
    UpdateServerList({{"plm", plmUrl}});
    (void)ShouldInvalidateCache(true);
    const std::string result = Run(address, checkIn);
    // A host is to read its listings again after a success, and after no failure.
    EXPECT_EQ(ShouldInvalidateCache(false), result.find(" 0 ") != std::string::npos);
    return result;
  });
}

}  // namespace vtdirect_test
