#include "hosts/cli/checkouts/checkout_book.h"

#include <vtdirect/vt_direct_manager.h>

#include <algorithm>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/copy_search.h"
#include "hosts/cli/files/state_file.h"
#include "hosts/cli/program/environment.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] StateFile FileOf(const std::string& path) {
  return {path, "vtdirect-checkouts 1", "list of checkouts"};
}

[[nodiscard]] std::string BrokenLinesFault(const StateLines& lines, const std::string& path) {
  std::string numbers;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    // The first line of the file names its form.
    if (!CheckoutOfLine(lines[i])) numbers += (numbers.empty() ? "" : ", ") + std::to_string(i + 2);
  }
  if (numbers.empty()) return {};
  return path + " holds lines that are no checkouts, and stay as they are: " + numbers;
}

// Puts the checkout in the place of the first that leads to the same document or working copy, and takes the
// others away.
void PutIntoBook(StateLines& lines, const KeptCheckout& checkout) {
  const auto isReplaced = [&checkout](const std::string& line) {
    const auto old = CheckoutOfLine(line);
    return old && (LeadsTo(*old, checkout.document) || LeadsTo(*old, checkout.uid));
  };
  const auto place = std::find_if(lines.begin(), lines.end(), isReplaced);
  if (place == lines.end()) {
    lines.push_back(LineOfCheckout(checkout));
    return;
  }
  *place = LineOfCheckout(checkout);
  lines.erase(std::remove_if(place + 1, lines.end(), isReplaced), lines.end());
}

// The checkout to keep, with what the address and what was kept before tell of it.
[[nodiscard]] KeptCheckout DescribeCheckout(const std::string& address, const std::string& uid,
                                            const std::optional<KeptCheckout>& before) {
  KeptCheckout checkout;
  checkout.document = before ? before->document : VtDirectManager::GetUID(address.c_str());
  if (checkout.document.empty()) checkout.document = uid;
  checkout.uid = uid;
  checkout.name = VtDirectManager::GetFileName(uid.c_str());
  if (checkout.name.empty() && before) checkout.name = before->name;
  static_cast<void>(VtDirectManager::GetCheckoutStatus(uid.c_str(), &checkout.user));
  if (checkout.user.empty() && before) checkout.user = before->user;
  checkout.since = before && !before->since.empty() ? before->since : TimeOfNow();
  return checkout;
}

}  // namespace

std::string CheckoutBook::Location() {
  const std::string directory = StateDirectory();
  return directory.empty() ? "" : directory + "/checkouts";
}

BookContents CheckoutBook::Read() const {
  const auto lines = FileOf(path_).Read();
  if (!lines) return {.readable = false, .fault = lines.failure().message};
  BookContents contents;
  contents.fault = BrokenLinesFault(*lines, path_);
  for (const std::string& line : *lines) {
    if (auto checkout = CheckoutOfLine(line)) contents.checkouts.push_back(std::move(*checkout));
  }
  return contents;
}

std::optional<KeptCheckout> CheckoutBook::Find(const std::string& uid) const {
  for (const KeptCheckout& kept : Read().checkouts) {
    if (LeadsTo(kept, uid)) return kept;
  }
  return std::nullopt;
}

std::string CheckoutBook::Keep(const KeptCheckout& checkout) const {
  return FileOf(path_).Change([&checkout](StateLines& lines) {
    PutIntoBook(lines, checkout);
    return true;
  });
}

std::string CheckoutBook::Forget(const std::string& uid) const {
  return FileOf(path_).Change([&uid](StateLines& lines) {
    return std::erase_if(lines, [&uid](const std::string& line) {
             const auto checkout = CheckoutOfLine(line);
             return checkout && LeadsTo(*checkout, uid);
           }) > 0;
  });
}

std::string UidToGoOnWith(Host& host, const std::string& address) {
  const std::string uid = VtDirectManager::GetUID(address.c_str());
  if (uid.empty()) return {};
  const BookContents contents = CheckoutBook().Read();
  if (!contents.fault.empty()) host.output().Warning(contents.fault);
  for (const KeptCheckout& kept : contents.checkouts) {
    if (LeadsTo(kept, uid)) return kept.uid;
  }
  return uid;
}

std::string WithWorkspace(const std::string& uid) {
  if (uid.empty() || HasWorkspace(uid)) return uid;
  const std::string url = VtDirectManager::GetServerURL(uid.c_str());
  const std::string found =
      VtDirectManager::UIDFromVantryParams(url.c_str(), DocumentIdOf(uid).c_str(), nullptr, false);
  return HasWorkspace(found) ? found : uid;
}

Result<std::string> FindWorkingCopy(Host& host, const std::string& address) {
  const std::string uid = VtDirectManager::GetUID(address.c_str());
  if (uid.empty()) return uid;
  if (auto failure = RefusalOfAnotherPlace(address, uid)) return *failure;
  if (CheckoutBook().Find(uid)) return WithWorkspace(UidToGoOnWith(host, uid));
  const auto found = CopyToGoOnWith(host, address, ReadCheckoutState(uid).status, uid);
  if (!found) return found.failure();
  return WithWorkspace(found->uid);
}

bool KeepCheckout(Host& host, const std::string& address, const std::string& uid) {
  if (!HasObjectId(uid)) return false;
  const CheckoutBook book;
  const std::string fault = book.Keep(DescribeCheckout(address, uid, book.Find(uid)));
  if (fault.empty()) return true;
  host.output().Warning("the UID of the working copy is not kept: " + fault +
                        "; give it yourself from now on: " + uid);
  return false;
}

void ForgetCheckout(Host& host, const std::string& uid) {
  const CheckoutBook book;
  if (!book.Find(uid)) return;
  const std::string fault = book.Forget(uid);
  if (!fault.empty()) host.output().Warning("a checkout that has ended is still kept: " + fault);
}

}  // namespace vtdirect_cli
