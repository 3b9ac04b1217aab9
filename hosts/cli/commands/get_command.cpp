#include "hosts/cli/address.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/files/content_download.h"
#include "hosts/cli/host.h"

namespace vtdirect_cli {
namespace {

ExitCode RunGet(Host& host, const Arguments& arguments) {
  Download download;
  download.address = arguments.Text("ADDRESS");
  download.described = {{"address", download.address}};
  if (const auto failure = CheckDownloadOptions(host, arguments)) return host.output().Fail(*failure);
  AddressKind kind{};
  if (const auto failure = RequireAddress(download.address, kind)) return host.output().Fail(*failure);
  if (const auto failure = SettleDownload(host, arguments, download)) return host.output().Fail(*failure);
  return RunDownload(host, download);
}

[[nodiscard]] std::vector<MemberRow> Members() {
  std::vector<MemberRow> members = {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"}};
  for (const MemberRow& row : DownloadMembers()) members.push_back(row);
  return members;
}

}  // namespace

CommandRow GetCommand() {
  return {"get",
          "Download an object's content",
          "Downloads the content of the object at ADDRESS. It is written to a temporary file beside the "
          "target, brought to the disk and renamed into place, so that a download that fails or is "
          "interrupted never harms what was there. A symbolic link is followed: the file that it leads to is "
          "replaced, and the link stays. A device or a pipe is written into.\n\n"
          "Without -o the file name is that of the object, escaped as in a path (the characters |\\/<>:\"?*% "
          "as %hh), in the current directory. A dot in front and control bytes are escaped too, so that no "
          "name leads out of the directory or hides in it.",
          {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
          DownloadOptions(),
          true,
          RunGet,
          Members()};
}

}  // namespace vtdirect_cli
