#include "hosts/cli/checkouts/checkout_book.h"

#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <functional>

#include "hosts/cli/address.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/copy_search.h"
#include "hosts/cli/environment.h"
#include "hosts/cli/files/local_text_file.h"
#include "hosts/cli/files/state_file.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

constexpr std::string_view kFirstLine = "vtdirect-checkouts 1";
constexpr std::string_view kAnyFirstLine = "vtdirect-checkouts ";

// A line of the file: a checkout, or what it is otherwise.
struct Line {
  std::string text;
  std::optional<KeptCheckout> checkout;
};

struct Book {
  std::vector<Line> lines;
  std::string fault;
};

[[nodiscard]] std::string Now() {
  const std::time_t now = std::time(nullptr);
  std::tm parts = {};
  if (gmtime_r(&now, &parts) == nullptr) return {};
  char text[32];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

[[nodiscard]] std::vector<std::string_view> LinesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return lines;
}

[[nodiscard]] std::string FaultOfFirstLine(std::string_view line, const std::string& path) {
  if (line == kFirstLine) return {};
  if (line.starts_with(kAnyFirstLine)) {
    return path + " was written by another release of vtdirect, and is left as it is";
  }
  return path + " holds no list of checkouts, and is left as it is";
}

// Reads all lines, broken ones too. The fault stops a change.
[[nodiscard]] Book ParseBook(std::string_view text, const std::string& path) {
  Book book;
  if (text.empty()) return book;
  const auto lines = LinesOf(text);
  book.fault = FaultOfFirstLine(lines.front(), path);
  if (!book.fault.empty()) return book;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    book.lines.push_back({std::string(lines[i]), CheckoutOfLine(lines[i])});
  }
  return book;
}

[[nodiscard]] std::string FormatBook(const Book& book) {
  std::string text = std::string(kFirstLine) + '\n';
  for (const Line& line : book.lines) text += line.text + '\n';
  return text;
}

[[nodiscard]] std::string BrokenLinesFault(const Book& book, const std::string& path) {
  std::string numbers;
  for (std::size_t i = 0; i < book.lines.size(); ++i) {
    // The first line holds the version.
    if (!book.lines[i].checkout) numbers += (numbers.empty() ? "" : ", ") + std::to_string(i + 2);
  }
  if (numbers.empty()) return {};
  return path + " holds lines that are no checkouts, and stay as they are: " + numbers;
}

[[nodiscard]] Book LoadBook(const std::string& path) {
  std::string text;
  const int error = ReadLocalTextFile(path, text);
  if (error != 0 && error != ENOENT) return {{}, "cannot read " + path + ": " + std::strerror(error)};
  return ParseBook(text, path);
}

// Changes the book under its lock.
// @param change  says whether there was anything to change
[[nodiscard]] std::string ChangeBook(const std::string& path, const std::function<bool(Book&)>& change) {
  if (path.empty()) return "there is no home directory (HOME, XDG_STATE_HOME) to keep it in";
  std::string fault;
  const StateFileLock lock(path, fault);
  if (!fault.empty()) return fault;
  Book book = LoadBook(path);
  if (!book.fault.empty()) return book.fault;
  return change(book) ? ReplaceStateFile(path, FormatBook(book)) : std::string();
}

// Puts the checkout in the place of the first that leads to the same document or working copy, and takes the
// others away.
void PutIntoBook(Book& book, const KeptCheckout& checkout) {
  const Line line{LineOfCheckout(checkout), checkout};
  const auto isReplaced = [&checkout](const Line& old) {
    return old.checkout &&
           (LeadsTo(*old.checkout, checkout.document) || LeadsTo(*old.checkout, checkout.uid));
  };
  const auto place = std::find_if(book.lines.begin(), book.lines.end(), isReplaced);
  if (place == book.lines.end()) {
    book.lines.push_back(line);
    return;
  }
  *place = line;
  book.lines.erase(std::remove_if(place + 1, book.lines.end(), isReplaced), book.lines.end());
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
  checkout.since = before && !before->since.empty() ? before->since : Now();
  return checkout;
}

}  // namespace

std::string CheckoutBook::Location() {
  const std::string directory = StateDirectory();
  return directory.empty() ? "" : directory + "/checkouts";
}

BookContents CheckoutBook::Read() const {
  BookContents contents;
  if (path_.empty()) return contents;
  const Book book = LoadBook(path_);
  contents.readable = book.fault.empty();
  contents.fault = contents.readable ? BrokenLinesFault(book, path_) : book.fault;
  for (const Line& line : book.lines) {
    if (line.checkout) contents.checkouts.push_back(*line.checkout);
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
  return ChangeBook(path_, [&checkout](Book& book) {
    PutIntoBook(book, checkout);
    return true;
  });
}

std::string CheckoutBook::Forget(const std::string& uid) const {
  return ChangeBook(path_, [&uid](Book& book) {
    return std::erase_if(book.lines, [&uid](const Line& line) {
             return line.checkout && LeadsTo(*line.checkout, uid);
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

std::optional<Failure> FindWorkingCopy(Host& host, const std::string& address, std::string& workingCopy) {
  const std::string uid = VtDirectManager::GetUID(address.c_str());
  if (uid.empty()) return std::nullopt;
  if (auto failure = RefusalOfAnotherPlace(address, uid)) return failure;
  workingCopy = UidToGoOnWith(host, uid);
  if (!CheckoutBook().Find(uid)) {
    CopySearch found = CopyToGoOnWith(host, address, ReadCheckoutState(uid).status, uid);
    if (found.failure) return found.failure;
    workingCopy = found.uid;
  }
  workingCopy = WithWorkspace(workingCopy);
  return std::nullopt;
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
