#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/translation/xliff_subject.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] Failure NoSource(const XliffSubject& subject, const SourceXliff& source) {
  if (source.linked) {
    return {ExitCode::NotFound, "the source XLIFF of " + subject.address + " could not be read"};
  }
  return {ExitCode::NotFound,
          "the server shows no source XLIFF for " + subject.address + "; \"vtdirect xliff put\" sends one"};
}

ExitCode RunXliffSource(Host& host, const Arguments& arguments) {
  const auto settled = SettleSubject(host, arguments);
  if (!settled) return host.output().Fail(settled.failure());
  const XliffSubject& subject = *settled;
  ForgetReasons();
  const SourceXliff source = FindSourceXliff(subject);
  if (source.uid.empty()) {
    return host.output().Fail(DiagnoseXliff(host, subject, NoSource(subject, source)));
  }
  host.output().Row({{"uid", source.uid}, {"language", source.language}},
                    {{"address", subject.address}, {"uid", source.uid}, {"language", source.language}});
  return ExitCode::Ok;
}

}  // namespace

CommandRow XliffSourceCommand() {
  return {"xliff source",
          "Print the UID of a document's source XLIFF",
          "Prints the UID of the source XLIFF of the document at ADDRESS and its language as the server "
          "names it, separated by a tab. A document that has none gives exit status 6.",
          {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
          {AnywhereOption()},
          Requests::Some,
          RunXliffSource,
          {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
           {"uid", MemberType::Text, nullptr, "the UID of the source XLIFF"},
           {"language", MemberType::Text, nullptr, "its language"}}};
}

}  // namespace vtdirect_cli
