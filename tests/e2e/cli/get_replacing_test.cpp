#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>

#include "tests/e2e/cli/checkout_fixture.h"
#include "tests/e2e/cli/meddler.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace vtdirect_test {

/// What a download does to files that are there already.
class GetInto : public CheckoutTest {
 protected:
  void SetUp() override { Serve(); }

  ProcessResult Get(const std::string& file, const std::vector<std::string>& more = {}) {
    std::vector<std::string> words = {"get", forkPath, "-o", file};
    words.insert(words.end(), more.begin(), more.end());
    return Run(words);
  }
  std::string Refusal(const std::string& file, const std::vector<std::string>& more = {}) {
    const std::size_t before = server().Log().size();
    const ProcessResult result = Get(file, more);
    EXPECT_EQ(result.status, 8);
    EXPECT_EQ(server().Log().substr(before).find("/streams/"), std::string::npos) << "nothing is fetched";
    return result.err;
  }
  [[nodiscard]] struct stat FactsOf(const std::string& name) const {
    struct stat facts = {};
    EXPECT_EQ(stat(Here(name).c_str(), &facts), 0);
    return facts;
  }
};

TEST_F(GetInto, AFileThatWasNeverSavedTakesForce) {
  WriteFile(Here("copy"), "mine");
  EXPECT_THAT(Refusal("copy"), HasSubstr("copy is there and was not saved by vtdirect"));
  EXPECT_EQ(ReadFile(Here("copy")), "mine");
  EXPECT_EQ(Get("copy", {"--force"}).status, 0);
  EXPECT_THAT(ReadFile(Here("copy")), StartsWith(forkHead));
  EXPECT_EQ(Get("copy").status, 0) << "it is as it was saved";
}

TEST_F(GetInto, AFileThatWasEditedTakesForce) {
  ASSERT_EQ(Get("copy").status, 0);
  ASSERT_EQ(Get("copy").status, 0);
  const std::string saved = ReadFile(Here("copy"));
  WriteFile(Here("copy"), saved + "edited");
  EXPECT_THAT(Refusal("copy"), HasSubstr("copy was changed since vtdirect saved it as version B.1 of " +
                                         std::string(forkPath)));
  std::string other = saved;
  other[0] = 'X';
  WriteFile(Here("copy"), other);
  Refusal("copy");
  EXPECT_EQ(ReadFile(Here("copy")), other) << "of the same length";
  WriteFile(Here("copy"), saved);
  EXPECT_EQ(Get("copy").status, 0) << "what was edited back";
}

TEST_F(GetInto, ADirectoryKeepsToTheSameRule) {
  std::filesystem::create_directory(Here("d"));
  WriteFile(Here("d/fork.lxz"), "mine");
  EXPECT_THAT(Refusal("d"), HasSubstr("was not saved by vtdirect"));
  EXPECT_THAT(Refusal("d/"), HasSubstr("was not saved by vtdirect"));
  EXPECT_EQ(ReadFile(Here("d/fork.lxz")), "mine");
}

TEST_F(GetInto, OneFileIsKnownByAllItsPaths) {
  ASSERT_EQ(Get("copy").status, 0);
  EXPECT_EQ(Get(Here("copy")).status, 0);
  ASSERT_EQ(symlink("copy", Here("link").c_str()), 0);
  EXPECT_EQ(Get("link").status, 0);
  WriteFile(Here("copy"), "edited");
  Refusal(Here("copy"));
  Refusal("link");
}

TEST_F(GetInto, AFileThatWasStoredMayBeReplaced) {
  WriteFile(Here("copy"), "stored");
  ASSERT_EQ(Run({"put", "copy", forkPath}).status, 0);
  EXPECT_EQ(Get("copy").status, 0) << "the server has it";
  WriteFile(Here("copy"), "stored and edited");
  Refusal("copy");
}

// Undone, a working copy goes with all that is in it.
TEST_F(GetInto, AFileThatWasStoredInAWorkingCopyIsReplacedByThatCopyAlone) {
  for (const std::string& address : {std::string(forkPath), std::string(forkOnBench)}) {
    SCOPED_TRACE(address);
    const std::string uid = CheckOut(address);
    WriteFile(Here("copy"), "stored in " + address);
    ASSERT_EQ(Run({"put", "copy", uid}).status, 0);
    EXPECT_EQ(Get("copy").status, 0) << "the working copy has it";
    EXPECT_THAT(Refusal("copy", {"--base"}), HasSubstr("copy has the content of the working copy " + uid));
    ASSERT_EQ(RunElsewhere({"undo", uid}).status, 0);
    EXPECT_THAT(Refusal("copy"), HasSubstr("copy has the content of the working copy " + uid));
    EXPECT_EQ(ReadFile(Here("copy")), "stored in " + address);
    static_cast<void>(Run({"undo", uid}));
    Refusal("copy");
    EXPECT_EQ(Get("copy", {"--force"}).status, 0);
    EXPECT_EQ(Get("copy").status, 0) << "the document has it";
  }
}

TEST_F(GetInto, AFileWhoseWorkingCopyWasUndoneIsLeft) {
  const std::string uid = CheckOut(forkPath);
  WriteFile(Here("copy"), "stored");
  ASSERT_EQ(Run({"put", "copy", uid}).status, 0);
  ASSERT_EQ(Run({"undo", uid}).status, 0);
  Refusal("copy");
  EXPECT_EQ(ReadFile(Here("copy")), "stored");
}

TEST_F(GetInto, AFileWhoseWorkingCopyWasCheckedInMayBeReplaced) {
  WriteFile(Here("copy"), "stored");
  ASSERT_EQ(Run({"put", "copy", CheckOut(forkPath)}).status, 0);
  ASSERT_EQ(Run({"checkin", forkPath}).status, 0);
  EXPECT_EQ(Get("copy").status, 0) << "the server has it";
  WriteFile(Here("other"), "stored at once");
  ASSERT_EQ(Run({"put", "other", CheckOut(forkPath), "--checkin"}).status, 0);
  EXPECT_EQ(Get("other").status, 0) << "the server has it";
}

TEST_F(GetInto, AFileIsLeftWhenAnotherOneWasStoredInItsWorkingCopySince) {
  const std::string uid = CheckOut(forkPath);
  WriteFile(Here("copy"), "stored first");
  WriteFile(Here("other"), "stored then");
  ASSERT_EQ(Run({"put", "copy", uid}).status, 0);
  ASSERT_EQ(Run({"put", "other", uid}).status, 0);
  EXPECT_THAT(Refusal("copy"), HasSubstr("was not saved by vtdirect"));
  EXPECT_EQ(ReadFile(Here("copy")), "stored first");
}

TEST_F(GetInto, AWriteProtectedFileIsRefusedEvenByForce) {
  ASSERT_EQ(Get("copy").status, 0);
  ASSERT_EQ(chmod(Here("copy").c_str(), 0444), 0);
  EXPECT_THAT(Refusal("copy"), HasSubstr("copy is write-protected, and is not replaced"));
  Refusal("copy", {"--force"});
}

TEST_F(GetInto, ADanglingLinkMakesTheFileThatItLeadsTo) {
  std::filesystem::create_directory(Here("d"));
  ASSERT_EQ(symlink("d/new", Here("link").c_str()), 0);
  EXPECT_EQ(Get("link").status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(Here("link")));
  EXPECT_THAT(ReadFile(Here("d/new")), StartsWith(forkHead));
  ASSERT_EQ(symlink("round", Here("round").c_str()), 0);
  EXPECT_THAT(Refusal("round"), HasSubstr("cannot write round"));
}

TEST_F(GetInto, ANameThatIsTooLongIsFoundOutBefore) {
  EXPECT_THAT(Refusal(std::string(300, 'n')), HasSubstr("File name too long"));
  EXPECT_THAT(HereNames(), ElementsAre());
}

TEST_F(GetInto, AFileKeepsItsPermissionsAndItsGroup) {
  ASSERT_EQ(Get("copy").status, 0);
  ASSERT_EQ(chmod(Here("copy").c_str(), 0640), 0);
  if (geteuid() == 0) {
    ASSERT_EQ(chown(Here("copy").c_str(), static_cast<uid_t>(-1), 7), 0);
  }
  const struct stat before = FactsOf("copy");
  ASSERT_EQ(Get("copy").status, 0);
  EXPECT_EQ(FactsOf("copy").st_mode & 0777U, 0640U);
  EXPECT_EQ(FactsOf("copy").st_gid, before.st_gid);
}

TEST_F(GetInto, AFileThatIsWrittenToMeanwhileIsLeft) {
  ASSERT_EQ(Get("copy").status, 0);
  Restart({"--fault", "GET *streams*=stall:100*1"});
  const auto process = Start({"--stall-timeout", "2", "get", forkPath, "-o", "copy", "-f"});
  EXPECT_EQ(process->Wait().status, 7);
  Restart({"--latency", "150"});
  const auto slow = Start({"get", forkPath, "-o", "copy"});
  EXPECT_TRUE(WaitUntil([this] { return HereNames().size() == 2; })) << "the download has begun";
  WriteFile(Here("copy"), "edited meanwhile");
  const ProcessResult result = slow->Wait();
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err,
              HasSubstr("copy was written to while the content was fetched, and is not replaced"));
  EXPECT_EQ(ReadFile(Here("copy")), "edited meanwhile");
  EXPECT_THAT(HereNames(), ElementsAre("copy"));
}

TEST_F(GetInto, AFileWithoutARecordIsLeft) {
  ASSERT_EQ(Get("copy").status, 0);
  std::filesystem::remove_all(Home(".local/state/vtdirect/fetched"));
  EXPECT_THAT(Refusal("copy"), HasSubstr("was not saved by vtdirect"));
}

TEST_F(GetInto, ForceAndNoClobberAreNotMeantTogether) {
  EXPECT_EQ(Get("copy", {"--force", "--no-clobber"}).status, 2);
}

/// Whose content is fetched of a document that is checked out.
class GetOfACheckout : public CheckoutTest {
 protected:
  void SetUp() override { Serve(); }
  [[nodiscard]] std::string Content(const std::vector<std::string>& words) {
    std::vector<std::string> all = {"get", "-o", "-"};
    all.insert(all.end(), words.begin(), words.end());
    const ProcessResult result = Run(all);
    EXPECT_EQ(result.status, 0) << result.err;
    return result.out;
  }
};

TEST_F(GetOfACheckout, IsTheWorkingCopysUnlessTheBaseIsAskedFor) {
  const std::string base = server().Get(forkContent);
  WriteFile(Here("new"), "new content");
  const std::string uid = CheckOut(forkPath);
  EXPECT_EQ(Content({uid}), base) << "nothing is stored yet";
  ASSERT_EQ(Run({"put", "new", forkPath}).status, 0);
  for (const std::string& address :
       {uid, std::string(forkPath), server().Uid("D1001"), std::string("//sim/?id=D1001")}) {
    EXPECT_EQ(Content({address}), "new content") << address;
    EXPECT_EQ(Content({address, "--base"}), base) << address;
  }
  const ProcessResult json = Run({"--json", "get", forkPath, "-o", "copy"});
  EXPECT_THAT(json.out, HasSubstr("\"uid\":\"" + uid + "\"")) << "the one to go on with";
}

TEST_F(GetOfACheckout, IsTheWorkingCopysByItsUidWhereNothingIsKept) {
  const std::string uid = CheckOut(forkPath);
  WriteFile(Here("new"), "new content");
  ASSERT_EQ(Run({"put", "new", forkPath}).status, 0);
  const ProcessResult elsewhere = RunElsewhere({"get", uid, "-o", "-"});
  EXPECT_EQ(elsewhere.out, "new content");
}

TEST_F(GetOfACheckout, IsTheWorkingCopysInAWorkspaceOfOnesOwn) {
  const std::string base = server().Get(forkContent);
  WriteFile(Here("new"), "new content");
  const std::string uid = CheckOut(forkOnBench);
  ASSERT_EQ(Run({"put", "new", forkPath}).status, 0);
  for (const std::string& address : {uid, std::string(forkPath), server().Uid("D1001")}) {
    EXPECT_EQ(Content({address}), "new content") << address;
    EXPECT_EQ(Content({address, "--base"}), base) << address;
  }
}

TEST_F(GetOfACheckout, IsTheDocumentsWhenTheCopyIsGone) {
  const std::string uid = CheckOut(forkPath);
  ASSERT_EQ(RunElsewhere({"undo", uid}).status, 0);
  EXPECT_EQ(Content({forkPath}), server().Get(forkContent));
  const ProcessResult byUid = Run({"get", uid, "-o", "-"});
  EXPECT_EQ(byUid.status, 1);
  EXPECT_EQ(byUid.out, "") << "what was asked for is not there";
  EXPECT_THAT(byUid.err,
              HasSubstr("the working copy " + uid + " is not there any more; nothing was fetched"));
}

TEST_F(GetOfACheckout, IsNotTheBasesWhenAQuestionFails) {
  const std::string uid = CheckOut(forkPath);
  WriteFile(Here("new"), "new content");
  ASSERT_EQ(Run({"put", "new", forkPath}).status, 0);
  for (const char* fault :
       {"GET *dkm/documents/D*=503", "GET *dkm/documents/D*=503*1", "GET *dkm/documents/D*=drop*2"}) {
    Restart({"--fault", fault});
    const ProcessResult result = Run({"get", uid, "-o", "-"});
    EXPECT_TRUE(result.status != 0 ? result.out.empty() : result.out == "new content") << fault << result.out;
  }
}

/// A path names a document by where it is, and not another one of its name.
class GetByPath : public VtDirect {
 protected:
  void SetUp() override { Serve(); }
  const std::string wrong_ = "//sim/Products/Trekking Bike/Folders/Drivetrain/fork.lxz";
};

TEST_F(GetByPath, IsRefusedWhereTheDocumentDoesNotStand) {
  for (const std::string& wrong : {wrong_, std::string("//sim/Products/NoSuch/Folders/X/Y/fork.lxz")}) {
    for (const char* command :
         {"get", "info", "uid", "path", "url", "versions", "links", "browse-url", "edit-url", "status"}) {
      const ProcessResult result = Run({command, wrong});
      EXPECT_EQ(result.status, 6) << command << " " << wrong << result.out;
      EXPECT_THAT(result.err,
                  HasSubstr("not found: " + wrong + "; the document of that name, " + server().Uid("D1001")))
          << command;
      EXPECT_THAT(result.err, Not(HasSubstr("nothing was changed"))) << command << " changes nothing anyway";
    }
  }
  EXPECT_THAT(HereNames(), ElementsAre());
}

// An answer that did not come says nothing about the place.
TEST_F(GetByPath, IsRefusedWhenTheServerDoesNotTellWhereTheDocumentStands) {
  bool wasTold = false;
  for (int passing = 0; passing < 4; ++passing) {
    std::atomic<int> reads = 0;
    Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
      const bool isRead = request.target.find("dkm/documents/D1001") != std::string::npos;
      if (isRead && reads++ >= passing) return peer.Answer(503, "{}");
      peer.Send(forward());
    });
    environment_["http_proxy"] = meddler.Url();
    const ProcessResult result = Run({"uid", "//sim/Products/NoSuch/Folders/X/Y/fork.lxz"});
    EXPECT_NE(result.status, 0) << passing;
    EXPECT_EQ(result.out, "") << passing;
    wasTold |= result.err.find("could not be found out") != std::string::npos;
    environment_.erase("http_proxy");
  }
  EXPECT_TRUE(wasTold) << "one of them is the question for the place";
}

// Without an answer it is not known whether the path leads to another document: whichever question gets none, or that
// one and the next, or three.
TEST_F(GetByPath, IsRefusedWhicheverQuestionTheServerDoesNotAnswer) {
  for (const auto& [status, body] : {std::pair{503, "{}"}, std::pair{403, "{}"}, std::pair{200, "<html>"}}) {
    for (int missing = 1; missing < 4; ++missing) {
      for (int at = 0, asked = 1; at < asked && !HasFailure(); ++at) {
        std::atomic<int> questions = 0;
        Meddler meddler([&, at, status = status, body = body](Peer& peer, const WireRequest& /*request*/,
                                                              const Meddler::Forward& forward) {
          const int number = questions++;
          if (number >= at && number < at + missing) return peer.Answer(status, body);
          peer.Send(forward());
        });
        environment_["http_proxy"] = meddler.Url();
        const ProcessResult result = Run({"get", wrong_, "-o", "-"});
        environment_.erase("http_proxy");
        asked = questions;
        EXPECT_NE(result.status, 0) << missing << " times " << status << " at " << at;
        EXPECT_EQ(result.out, "") << missing << " times " << status << " at " << at;
      }
    }
  }
}

TEST_F(GetByPath, TakesTheDocumentAnywhereWhenAsked) {
  for (const char* command :
       {"get", "info", "uid", "path", "url", "versions", "links", "browse-url", "edit-url", "status"}) {
    EXPECT_EQ(Run({command, "--anywhere", wrong_}).status, std::string(command) == "edit-url" ? 1 : 0)
        << command;
  }
  EXPECT_THAT(ReadFile(Here("fork.lxz")), StartsWith(forkHead));
}

}  // namespace vtdirect_test
