// Tells why a document could not be fetched: what went wrong, at which step, and what the server said.
//
//   reasons http://127.0.0.1:8080/ '//plm/?id=D9999'
#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>
#include <vtdirect/vt_direct_utils.h>

#include <iostream>
#include <string>

namespace {

using namespace VtDirectManager;

// What a user can do about it. A program decides by the kind; texts of servers are for people.
std::string Advice(const Failure& cause) {
  switch (cause.kind) {
    case FailureKind::NotFound:
      // What is not found is told by the step: an address can name a server that is not in the list.
      return cause.step == "find the server" ? "the address names no listed server"
                                             : "there is no such document";
    case FailureKind::CredentialsWanted:
      return "log in with another name or password";
    case FailureKind::Unreachable:
      return "see whether the server runs";
    case FailureKind::TimedOut:
      return "try again later";
    default:
      return {};
  }
}

void Explain(const Outcome& outcome) {
  const auto cause = outcome.Cause();
  if (!cause) return;
  std::cout << cause->step << ": " << FailureKindText(cause->kind) << '\n';
  if (cause->httpStatus != 0) std::cout << "  HTTP " << cause->httpStatus << '\n';
  if (!cause->serverText.empty()) std::cout << "  the server says: " << cause->serverText << '\n';
  if (!cause->url.empty()) std::cout << "  at " << cause->url << '\n';
  // Nothing is sent twice by itself: after a write whose answer was lost, ask for the state of things.
  if (outcome.MayHaveHappened()) std::cout << "  it may have been carried out all the same\n";
  const std::string advice = Advice(*cause);
  if (!advice.empty()) std::cout << "  " << advice << '\n';
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    std::cerr << "usage: reasons SERVER ADDRESS\n";
    return 2;
  }
  UpdateServerList({{"plm", arguments[1]}});

  // Collects for this thread while it is on the stack. What succeeds may leave entries too, so the result is
  // asked first.
  const Outcome outcome;
  if (VtDirectUtils::GetLocalFile(arguments[2]) != nullptr) {
    std::cout << "nothing is wrong\n";
    return 0;
  }
  Explain(outcome);
  return 1;
}
