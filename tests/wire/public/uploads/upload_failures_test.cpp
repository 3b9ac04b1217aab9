#include "tests/wire/public/uploads/upload_walk.h"

// Every request of every exported upload to a document that exists fails in every way.
namespace vtdirect_test {
namespace {

class UploadFailures : public UploadWalkTest {
 protected:
  // The schema, and then the steps of a document's state. Each flow goes on after them.
  static Step Probe(const Flow& flow, const std::string& success, const Traces& traces) {
    return {flow[0].line, flow[0].answer, NotProbed(), GoesOn(flow, 1, success, traces)};
  }
  // An iteration of the whole id is all that is left to try for a document whose state is not known.
  [[nodiscard]] Ending IteratesWholeId(const std::string& id, const std::string& escaped,
                                       const Traces& before) const {
    return {Failed(8), Join(before, {StoringAt(""), NotLocated(id)}), {{404, ""}}, {DocumentLine(escaped)}};
  }
};

INSTANTIATE_TEST_SUITE_P(Of, UploadFailures, testing::ValuesIn(AllUploadForms()), NameOfForm);

TEST_P(UploadFailures, OfAnIteration) {
  const Answer document{200, R"({"id":"D1"})"};
  const Flow flow = Join(Join({{probeLine, walkedSchema},
                               {DocumentLine("D1"), document},
                               {DocumentLine("D1") + "/versions?contextId=", walkedNoList},
                               {DocumentLine("D1"), document}},
                              TransferFlow()),
                         {{Post(documentsPath), walkedStored}});
  const std::string success = Done(storedUid);
  const Traces traces{StoringAt(""), uploaded};
  Ending stateUnreadable = GoesOn(flow, 3, success, traces);
  stateUnreadable.answers.insert(stateUnreadable.answers.begin(), walkedNoList);
  stateUnreadable.lines.insert(stateUnreadable.lines.begin(), Get(documentsPath + "//versions?contextId="));
  const Ending withoutVersions = GoesOn(flow, 3, success, traces);
  Walk(Join({Probe(flow, success, traces),
             {flow[1].line, flow[1].answer, GoesOn(flow, 3, success, Join({NotLocated("D1")}, traces)),
              stateUnreadable},
             {flow[2].line, flow[2].answer, withoutVersions, withoutVersions},
             {flow[3].line,
              flow[3].answer,
              {Failed(8), {StoringAt(""), NotLocated("D1")}},
              GoesOn(flow, 4, success, traces)}},
            TransferSteps(flow, 4, success, {{StoringAt("")}, {uploaded}},
                          {8, Error("Failed to iterate document id D1 " + ThreePaths() + "\n")})),
       uidOfD1);
}

// The check-in is asked for where it does not come by itself.
TEST_P(UploadFailures, OfAStoreIntoATemporaryCheckout) {
  const std::string id = "D1001|W77|D1002|T";
  const Flow flow = Join(Join({{probeLine, walkedSchema},
                               {DocumentLine("D1001"), {200, R"({"id":"D1001"})"}},
                               {DocumentLine("D1002"), {200, R"({"id":"D1002"})"}}},
                              TransferFlow()),
                         {{Post(workspacesPath + "/W77/store"), walkedNoList},
                          {Post(workspacesPath + "/W77/checkin"), walkedStored},
                          {Post(workspacesPath + "/W77/delete"), {200, ""}}});
  const std::string success = Done(storedUid);
  const TraceLine checkedIn = Miss("Checked-in document id D1002 on workspace W77 giving id D9\n");
  const Traces traces{StoringAt(""), checkedIn, uploaded};
  const Ending notCheckedIn{Failed(9),
                            {StoringAt(""), Error("Failed to check-in document with error {error}\n"),
                             Error("Failed to check-in document id D1002 on workspace W77\n")}};
  const std::size_t last = flow.size() - 1;
  const Ending unknownId =
      GoesOn(flow, last, Done(uidStem),
             {StoringAt(""), Miss("Checked-in document id D1002 on workspace W77 giving id \n"),
              Information("Uploaded document id  (.)\n")});
  const Ending notDeleted{
      success, {StoringAt(""), checkedIn, Error("Failed to delete temporary workspace W77\n"), uploaded}};
  Walk(Join(Join({Probe(flow, success, traces),
                  {flow[1].line, flow[1].answer,
                   IteratesWholeId(id, "D1001%7CW77%7CD1002%7CT", {NotLocated(id)}),
                   GoesOn(flow, 2, success, traces)},
                  {flow[2].line,
                   flow[2].answer,
                   {Failed(9), {StoringAt(""), NotLocated("D1002")}},
                   GoesOn(flow, 3, success, traces)}},
                 TransferSteps(flow, 3, success, {{StoringAt("")}, {checkedIn, uploaded}},
                               {9, Error("Failed to store document id D1002 " + ThreePaths() + "\n")})),
            {{flow[last - 1].line, flow[last - 1].answer, notCheckedIn, unknownId},
             {flow[last].line, flow[last].answer, notDeleted, {success, traces}}}),
       uidStem + id, !GetParam().ChecksInByItself());
}

TEST_P(UploadFailures, OfAStoreIntoAWorkspaceOfTheUsers) {
  const Answer copy{200, R"({"id":"D2","revision":"A","iteration":"1","context":{"id":"C5"},)"
                         R"("epmMaster":{"number":"0042","cadName":"pump.fnl"},)"
                         R"("pdmIterationState":{"isCheckoutByYou":true}})"};
  const Flow flow = Join(Join({{probeLine, walkedSchema},
                               {DocumentLine("D2"), copy},
                               {Get(documentsPath + "/search?number=0042&scope=C5"),
                                {200, R"([{"id":"D1","revision":"A","iteration":"1"}])"}},
                               {DocumentLine("D2"), copy}},
                              TransferFlow()),
                         {{Post(workspacesPath + "/W12/store"), walkedNoList}, {DocumentLine("D2"), copy}});
  const std::string success = Done(uidStem + "D2|W12&file=/pump.fnl");
  const TraceLine stored = Information("Uploaded document id D2|W12 (A.1)\n");
  const Traces traces{StoringAt(""), stored};
  Ending stateUnreadable = IteratesWholeId("D2|W12", "D2%7CW12", {});
  stateUnreadable.answers.insert(stateUnreadable.answers.begin(), walkedNoList);
  stateUnreadable.lines.insert(stateUnreadable.lines.begin(), Get(documentsPath + "//versions?contextId="));
  const TraceLine notFound = Error("Failed to find doc number 0042 with response: {text}");
  // What was stored stays, whether or not it can be read.
  const Ending notRead{Done(uidStem),
                       {StoringAt(""), NotLocated("D2|W12"), Information("Uploaded document id  ()\n")}};
  const Ending unreadable{Done(uidStem + "D2|W12"),
                          {StoringAt(""), Information("Uploaded document id D2|W12 (.)\n")}};
  const std::size_t last = flow.size() - 1;
  Walk(Join(Join({Probe(flow, success, traces),
                  {flow[1].line, flow[1].answer,
                   IteratesWholeId("D2|W12", "D2%7CW12", {NotLocated("D2|W12")}), stateUnreadable},
                  {flow[2].line, flow[2].answer, IteratesWholeId("D2|W12", "D2%7CW12", {notFound}),
                   IteratesWholeId("D2|W12", "D2%7CW12", {})},
                  {flow[3].line,
                   flow[3].answer,
                   {Failed(9), {StoringAt(""), NotLocated("D2")}},
                   GoesOn(flow, 4, success, traces)}},
                 TransferSteps(flow, 4, success, {{StoringAt("")}, {stored}},
                               {9, Error("Failed to store document id D2 " + ThreePaths() + "\n")})),
            {{flow[last].line, flow[last].answer, notRead, unreadable}}),
       uidStem + "D2|W12");
}

// Older servers give out tickets at an address of their own.
TEST_P(UploadFailures, OfATicketAtTheOlderAddress) {
  const Answer document{200, R"({"id":"D1"})"};
  Flow transfer = TransferFlow();
  transfer[1].answer = walkedNoService;
  const WalkedRequest older{Post("servlet/rest/content/creationFactory"), {200, Ticket(Files())}};
  transfer.insert(transfer.begin() + 2, older);
  const Flow flow = Join(Join({{probeLine, walkedSchema},
                               {DocumentLine("D1"), document},
                               {DocumentLine("D1") + "/versions?contextId=", walkedNoList},
                               {DocumentLine("D1"), document}},
                              transfer),
                         {{Post(documentsPath), walkedStored}});
  const Ending none{"not walked", {}};
  const Ending noTicket{Failed(8),
                        {StoringAt(""), Error("Failed to update document with error {error}\n"),
                         Error("Failed to iterate document id D1 " + ThreePaths() + "\n")}};
  std::vector<Step> steps;
  for (const WalkedRequest& request : Flow(flow.begin(), flow.begin() + 6)) {
    steps.push_back({request.line, request.answer, none, none});
  }
  steps.push_back({older.line, older.answer, noTicket, noTicket});
  Walk(steps, uidOfD1, false, 6);
}

// The probe's second way.
TEST_P(UploadFailures, OfTheListOfContextsThatShowsAServerToAnswer) {
  const Answer document{200, R"({"id":"D1"})"};
  const Flow flow = Join(Join({{probeLine, walkedNoService},
                               {Get("servlet/rest/v1/contexts"), {200, R"({"items":[]})"}},
                               {DocumentLine("D1"), document},
                               {DocumentLine("D1") + "/versions?contextId=", walkedNoList},
                               {DocumentLine("D1"), document}},
                              TransferFlow()),
                         {{Post(documentsPath), walkedStored}});
  const Ending none{"not walked", {}};
  const Ending noServer{
      NotPrepared("1 (null);"),
      {MissingServices()[1], Error("Failed to connect to server path https://plm.example/vt/\n")}};
  Walk({{flow[0].line, flow[0].answer, none, none},
        {flow[1].line, flow[1].answer, noServer,
         GoesOn(flow, 2, Done(storedUid), {MissingServices()[1], StoringAt(""), uploaded})}},
       uidOfD1, false, 1);
}

}  // namespace
}  // namespace vtdirect_test
