// Checks a document out, stores a local file into the working copy, and checks it in.
//
//   checkout http://127.0.0.1:8080/ '//plm/Products/Trekking Bike/Folders/Frame/frame.lxz' frame.lxz
#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <iostream>
#include <map>
#include <string>

namespace {

using namespace VtDirectManager;

// Says who has the document, if it could not be checked out.
void ExplainRefusal(const char* address) {
  std::string user;
  switch (GetCheckoutStatus(address, &user)) {
    case CheckoutByOther:
      std::cerr << "it is checked out by " << user << '\n';
      break;
    case CheckoutByUserUnrecorded:
      std::cerr << "you have it checked out somewhere else\n";
      break;
    case CheckoutUnsupported:
      std::cerr << "this server offers no checkout\n";
      break;
    case CheckoutNotPossible:
      std::cerr << "this document can't be checked out\n";
      break;
    default:
      std::cerr << "it could not be checked out\n";
      break;
  }
}

// The working copy keeps the links that it is told of and no others, so they are read and sent along. The kind
// FileTypeFenlet, which is the default of StoreOptions, keeps a viewable too.
bool StoreFile(const std::string& workingCopy, const char* file) {
  const Outcome outcome;
  std::map<std::string, std::string> links;
  GetSourceLinks(workingCopy.c_str(), links);
  // Links that could not be read look like no links, but leave a reason in the Outcome.
  if (links.empty() && !outcome.Empty()) return false;

  StoreOptions options;
  options.sourceLinks = &links;
  options.checkIn = CheckInWish::NoCheckIn;
  return Store(workingCopy.c_str(), file, options);
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) {
    std::cerr << "usage: checkout SERVER ADDRESS FILE\n";
    return 2;
  }
  UpdateServerList({{"plm", arguments[1]}});

  // From here on the working copy is named by its own UID. A host keeps it until the check-in, across
  // restarts too: GetCheckoutStatus tells then whether the checkout still exists. It can't tell if an Outcome
  // beside it is not empty.
  const std::string workingCopy = Checkout(arguments[2]);
  if (workingCopy.empty()) {
    ExplainRefusal(arguments[2]);
    return 1;
  }
  if (!StoreFile(workingCopy, arguments[3])) {
    // Nobody else has seen the working copy, and nothing was stored into it: the document is as it was.
    const bool undone = !UndoCheckout(workingCopy.c_str()).empty();
    std::cerr << "nothing was stored" << (undone ? "\n" : "; the document is still checked out\n");
    return 1;
  }
  const std::string document = Checkin(workingCopy.c_str());
  if (document.empty()) {
    // What was stored is in the working copy. Undoing the checkout would throw it away.
    std::cerr << "stored, but not checked in; the working copy is " << workingCopy << '\n';
    return 1;
  }
  std::cout << document << '\n';
  return 0;
}
