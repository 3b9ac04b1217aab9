#include <gmock/gmock.h>
#include <signal.h>

#include <fstream>

#include "tests/e2e/cli/meanwhile.h"
#include "tests/e2e/cli/put_fixture.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {
namespace {

const std::string frameFolder = "//sim/Products/Trekking Bike/Folders/Frame/";
const std::string bench = "//sim/Products/Trekking Bike/Workspaces/Anna's bench/";

// Each request that stores, and how far the message says it came.
struct Step {
  const char* name;
  const char* request;
  const char* point;
};

constexpr Step ticketPath{"Ticket", "POST *creationFactory", "failed before the file was sent"};
constexpr Step uploadPath{"Upload", "POST *content/upload/*", "failed after the file was sent"};
constexpr Step creation{"Creation", "POST *dkm/documents", "failed after the file was sent"};
constexpr Step store{"Store", "POST *W301/store", "failed after the file was sent"};

// What is answered in place of success without the server having done anything.
constexpr const char* refusals[] = {"503", "409", "drop"};

}  // namespace

/// A file that is put while the server, or the file itself, lets it down.
class PutFailure : public PutTest {
 protected:
  void SetUp() override { WriteFile(Here("f"), "content"); }

  ProcessResult PutWithFault(const std::string& fault, const std::string& address) {
    Serve({"--fault", fault});
    const ProcessResult result = Run({"put", "f", address, "--stall-timeout", "2"});
    EXPECT_EQ(result.out, "");
    return result;
  }
};

std::string NameOfStep(const testing::TestParamInfo<std::tuple<Step, const char*>>& info) {
  return std::string(std::get<0>(info.param).name) + "_" + std::get<1>(info.param);
}

class PutRefused : public PutFailure, public testing::WithParamInterface<std::tuple<Step, const char*>> {
 protected:
  // Nothing is done without what was uploaded, or against a refusal.
  [[nodiscard]] static bool MayBeDone() {
    const auto [step, action] = GetParam();
    const std::string name = step.name;
    return (name == "Store" || name == "Creation") && std::string(action) != "409";
  }
  // A server that has answered is done with it. Without an answer it may come to it after it was asked what is there.
  [[nodiscard]] static bool MayComeYet() {
    return MayBeDone() && std::string(std::get<1>(GetParam())) == "drop";
  }
};

class CreationRefused : public PutRefused {};
class IterationRefused : public PutRefused {};
class StoreRefused : public PutRefused {};

INSTANTIATE_TEST_SUITE_P(Steps, CreationRefused,
                         testing::Combine(testing::Values(ticketPath, uploadPath, creation),
                                          testing::ValuesIn(refusals)),
                         NameOfStep);
INSTANTIATE_TEST_SUITE_P(Steps, IterationRefused,
                         testing::Combine(testing::Values(ticketPath, uploadPath, creation),
                                          testing::ValuesIn(refusals)),
                         NameOfStep);
INSTANTIATE_TEST_SUITE_P(Steps, StoreRefused,
                         testing::Combine(testing::Values(ticketPath, uploadPath, store),
                                          testing::ValuesIn(refusals)),
                         NameOfStep);

TEST_P(CreationRefused, LeavesNothingAndSaysSo) {
  const auto [step, action] = GetParam();
  const ProcessResult result = PutWithFault(std::string(step.request) + "=" + action, frameFolder);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("creating " + frameFolder + "f from f " + step.point + " ("));
  EXPECT_THAT(result.err,
              HasSubstr(MayComeYet() ? "; there is no such document, but its creation may still be "
                                       "carried out; \"vtdirect recover\" asks again, "
                                     : "; nothing was created; the same command can be given again"));
  EXPECT_THAT(Run({"ls", frameFolder}).out, Not(HasSubstr("/f\n")));
}

TEST_P(IterationRefused, LeavesTheNewestIterationAndSaysSo) {
  const auto [step, action] = GetParam();
  const ProcessResult result =
      PutWithFault(std::string(step.request) + "=" + action, frameFolder + "frame.lxz");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("making a new iteration of " + server().Uid("D1002") +
                                    "&file=/frame.lxz from f " + step.point));
  EXPECT_THAT(result.err,
              HasSubstr(MayComeYet() ? "; A.3 is the newest iteration, but the new one may still be "
                                       "carried out; \"vtdirect recover\" asks again, "
                                     : "; nothing was changed, A.3 is the newest iteration still; the "
                                       "same command can be given again"));
  EXPECT_THAT(Content(frameFolder + "frame.lxz"), HasSubstr("version A.3\n"));
}

TEST_P(StoreRefused, LeavesTheWorkingCopyAndSaysSo) {
  const auto [step, action] = GetParam();
  const ProcessResult result = PutWithFault(std::string(step.request) + "=" + action, bench + "crank.lxz");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("storing into the working copy " + server().Uid("D1026|W301") +
                                    "&file=/crank.lxz from f " + step.point));
  EXPECT_THAT(result.err, HasSubstr(std::string("; you still have it checked out, and ") +
                                    (MayBeDone() ? "whether the file is stored in it is not known; "
                                                 : "its content is as it was; ")));
  EXPECT_THAT(result.err, HasSubstr("; the same command can be given again"));
  EXPECT_THAT(DocumentOf(server(), "D1026").bytes, HasSubstr("name crank.lxz\n"));
}

// The server does what it is asked, and its answer is lost.
TEST_F(PutFailure, TellsOfADocumentWhoseCreationWasNotConfirmed) {
  const ProcessResult result = PutWithFault("POST *dkm/documents=cut:10", frameFolder);
  EXPECT_EQ(result.status, 1);
  const std::string uid = Run({"uid", frameFolder + "f"}).out;
  ASSERT_NE(uid, "");
  EXPECT_THAT(result.err, HasSubstr("; a document is there now, and only the answer may have been lost: " +
                                    uid.substr(0, uid.size() - 1) + "; "));
  EXPECT_EQ(Content(frameFolder + "f"), "content");
}

TEST_F(PutFailure, TellsOfAnIterationThatWasNotConfirmed) {
  const ProcessResult result = PutWithFault("POST *dkm/documents=cut:10", frameFolder + "frame.lxz");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err,
              HasSubstr("; the newest iteration is A.4 now, and only the answer may have been lost; "));
}

TEST_F(PutFailure, OfOneWhoCameTooLateSaysThatSomebodyElseWasFaster) {
  Serve({"--latency", "200"});
  for (const std::string& name : {std::string("frame.lxz"), std::string("new.lxz")}) {
    const std::size_t before = server().Log().size();
    const auto late = Start({"put", "f", frameFolder + name});
    ASSERT_TRUE(WaitUntil([&] { return server().Log().find("csrf", before) != std::string::npos; }));
    // Ticket and upload have still to be answered, and what makes the document comes after them.
    late->Signal(SIGSTOP);
    EXPECT_EQ(Run({"put", "f", frameFolder + name}).status, 0);
    late->Signal(SIGCONT);
    const ProcessResult result = late->Wait();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("write the document: conflict, HTTP 409: "));
    EXPECT_THAT(result.err,
                HasSubstr(name == "new.lxz" ? "; a document has appeared there meanwhile: "
                                            : "; somebody has made the iteration A.4 meanwhile; "));
  }
}

TEST_F(PutFailure, OfAnAnswerThatTellsOfNoDocumentIsToldWhenThereIsNone) {
  const ProcessResult result = PutWithFault("POST *dkm/documents=200*1", frameFolder);
  EXPECT_EQ(result.status, 11);
  EXPECT_THAT(result.err, HasSubstr("the server has taken f and did not tell what became of it; it shows no "
                                    "document " +
                                    frameFolder + "f; "));
}

// What a server tells of itself passes through a temporary file. The bound holds for the message as well,
// which ends within it.
TEST_F(PutFailure, ForWantOfAnyRoomBlamesNoServer) {
  Serve();
  fileSizeLimit_ = 480;
  const ProcessResult result = Run({"put", "f", frameFolder});
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err, HasSubstr("could not be copied whole"));
}

TEST_F(PutFailure, OfTheUploadsAnswerLeavesNothing) {
  const ProcessResult result = PutWithFault("POST *content/upload/*=cut:10", frameFolder);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("; nothing was created; "));
}

TEST_F(PutFailure, OfTheCheckInTellsThatTheFileIsStored) {
  Serve({"--fault", "POST *W301/checkin=503*1"});
  const ProcessResult result = Run({"put", "f", bench + "crank.lxz", "--checkin"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  const std::string uid = server().Uid("D1026|W301") + "&file=/crank.lxz";
  EXPECT_THAT(result.err, HasSubstr("the file is stored in the working copy " + uid));
  EXPECT_THAT(result.err, HasSubstr("vtdirect checkin '" + uid + "'"));
  EXPECT_EQ(DocumentOf(server(), "D1026").bytes, "content");
  EXPECT_THAT(ReadFile(Home(".local/state/vtdirect/checkouts")), HasSubstr("D1026|W301"));
}

TEST_F(PutFailure, OfAFileThatIsTooLargeSaysSo) {
  Serve({"--max-upload", "5000"});
  WriteFile(Here("f"), std::string(100'000, 'x'));
  const ProcessResult created = Run({"put", "f", frameFolder});
  EXPECT_EQ(created.status, 1);
  EXPECT_THAT(created.err, HasSubstr("(the server takes no files as large as this); nothing was created"));
  const ProcessResult iterated = Run({"put", "f", frameFolder + "frame.lxz"});
  EXPECT_THAT(iterated.err, HasSubstr("(the server takes no files as large as this); nothing was changed"));
  const ProcessResult stored = Run({"put", "f", bench + "crank.lxz"});
  EXPECT_THAT(stored.err, HasSubstr("(the server takes no files as large as this); you still have it"));
  WriteFile(Here("f"), "small");
  EXPECT_EQ(Run({"put", "f", frameFolder}).status, 0);
}

TEST_F(PutFailure, WithoutAServerToAskSaysThatTheStateIsNotKnown) {
  Serve({"--fault", "POST *dkm/documents=cut:10", "--fault", "GET *OrvetGW*=drop"});
  const ProcessResult result = Run({"put", "f", frameFolder});
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.err, HasSubstr("(no usable answer from " + server().url() +
                                    ": the server closed the connection without an answer; try again; if it "
                                    "stays so, look whether the address should begin with https); the state "
                                    "on the server could not be found "
                                    "out; \"vtdirect info '" +
                                    frameFolder + "f'\" tells when the server answers"));
}

// The library copies the files before it sends them, and a copy that could not be made whole would be a torn
// document.
TEST_F(PutFailure, ForWantOfRoomForTheCopySaysSo) {
  Serve();
  WriteFile(Here("f"), std::string(300'000, 'x'));
  fileSizeLimit_ = 100'000;
  const ProcessResult result = Run({"put", "f", frameFolder});
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err, HasSubstr("could not be copied whole to the directory for temporary files"));
  EXPECT_THAT(result.err, HasSubstr("nothing was stored"));
  EXPECT_THAT(Run({"ls", frameFolder}).out, Not(HasSubstr("/f\n")));
}

// What is around the file makes the body longer, so that a copy without its end may be longer than the file.
TEST_F(PutFailure, ForWantOfRoomForTheEndOfTheBodySendsNoHalfOne) {
  Serve();
  fileSizeLimit_ = 100'000;
  for (const std::size_t room : {0U, 100U, 300U}) {
    WriteFile(Here("f"), std::string(fileSizeLimit_ - room, 'x'));
    const ProcessResult result = Run({"put", "f", frameFolder});
    EXPECT_EQ(result.status, 8) << room;
    EXPECT_THAT(result.err, HasSubstr("nothing was stored")) << room;
    EXPECT_THAT(server().Log(), Not(HasSubstr("content/upload"))) << room;
  }
}

TEST_F(PutFailure, OfAFileThatGrowsStoresNothing) {
  Serve({"--latency", "20"});
  ProcessResult result;
  {
    const Meanwhile writer([this] {
      std::ofstream(Here("f"), std::ios::app) << "x";
      SleepMilliseconds(1);
    });
    result = Run({"put", "f", frameFolder});
  }
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err, HasSubstr("vtdirect: f was written to while it was read; nothing was stored"));
  EXPECT_THAT(Run({"ls", frameFolder}).out, Not(HasSubstr("/f\n")));
}

TEST_F(PutFailure, OfAFileThatShrinksOrGoesStoresNothing) {
  Serve({"--latency", "50"});
  WriteFile(Here("frame.lxz"), std::string(100'000, 'x'));
  auto process = Start({"put", "frame.lxz", frameFolder, "--viewable", "f"});
  // The first answer comes later than this, and the files are read behind the last of several.
  ASSERT_TRUE(WaitUntil([this] { return server().Log() != ""; }));
  WriteFile(Here("frame.lxz"), "short");
  const ProcessResult shrunk = process->Wait();
  EXPECT_EQ(shrunk.status, 8);
  EXPECT_THAT(shrunk.err, HasSubstr("frame.lxz was written to while it was read"));
  const std::string before = server().Log();
  process = Start({"put", "frame.lxz", frameFolder, "--viewable", "f"});
  ASSERT_TRUE(WaitUntil([&] { return server().Log() != before; }));
  unlink(Here("f").c_str());
  const ProcessResult gone = process->Wait();
  EXPECT_EQ(gone.status, 8);
  EXPECT_THAT(gone.err, HasSubstr("f was written to while it was read"));
  EXPECT_THAT(Content(frameFolder + "frame.lxz"), HasSubstr("version A.3\n"));
}

/// A server that answers a request no more, and a user who has had enough.
class PutInterrupted : public PutFailure {
 protected:
  ProcessResult InterruptAt(const std::string& request, std::vector<std::string> words) {
    Serve({"--fault", request + "=stall"});
    words.insert(words.begin(), "put");
    const auto process = Start(words);
    EXPECT_TRUE(WaitUntil([this] { return server().Log().find(lookedUp) != std::string::npos; }));
    // The request is on its way; nothing else tells when it has arrived.
    SleepMilliseconds(1000);
    process->Signal(SIGINT);
    ProcessResult result = process->Wait();
    EXPECT_EQ(result.status, 130);
    EXPECT_EQ(result.out, "");
    return result;
  }

 private:
  static constexpr const char* lookedUp = "csrf";
};

TEST_F(PutInterrupted, BeforeTheFileIsSentSaysThatNothingIsStored) {
  EXPECT_EQ(InterruptAt("POST *creationFactory", {"f", frameFolder}).err,
            "vtdirect: interrupted; nothing was stored\n");
}

TEST_F(PutInterrupted, WhileTheFileIsTakenSaysThatItIsNotKnown) {
  EXPECT_EQ(InterruptAt("POST *content/upload/*", {"f", frameFolder}).err,
            "vtdirect: interrupted; the file was sent, and whether the server has stored it is not known; "
            "\"vtdirect info '" +
                frameFolder + "f'\" tells\n");
}

TEST_F(PutInterrupted, WhileTheWorkingCopyIsStoredSaysSoInJsonToo) {
  const std::string err = InterruptAt("POST *W301/store", {"f", bench + "crank.lxz", "--json"}).err;
  EXPECT_THAT(err,
              testing::StartsWith("{\"schema\":2,\"command\":\"put\",\"error\":\"interrupted\",\"exit\":130,"
                                  "\"message\":\"interrupted; the file was sent, and whether the server has "
                                  "stored it is not known; "));
  EXPECT_THAT(err, testing::EndsWith("}\n"));
}

TEST_F(PutInterrupted, WhileItIsCheckedInSaysThatTheFileIsStored) {
  const std::string err = InterruptAt("POST *W301/checkin", {"f", bench + "crank.lxz", "--checkin"}).err;
  EXPECT_THAT(err, testing::StartsWith("vtdirect: interrupted; the file is stored in the working copy " +
                                       server().Uid("D1026|W301")));
  EXPECT_EQ(DocumentOf(server(), "D1026").bytes, "content");
}

}  // namespace vtdirect_test
