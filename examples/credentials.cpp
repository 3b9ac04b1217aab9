// Asks for a password when a server demands one, three times at most.
//
//   echo secret | credentials http://127.0.0.1:8080/ anna '//plm/?id=D1001'
#include <vtdirect/platform/http_credentials.h>
#include <vtdirect/platform/http_settings.h>
#include <vtdirect/vt_direct_manager.h>

#include <iostream>
#include <string>

namespace {

std::string user;

// Called on the thread of the request, each time the server refuses what was sent. True: try again with what
// is set now. False: report the refusal. The passwords are kept for the server that `url` names and sent to
// no other.
bool AskForPassword(const char* url) {
  std::cerr << "Password of " << user << " for " << url << ": ";
  std::string password;
  if (!std::getline(std::cin, password)) return false;
  du::http::SetPasswordCredentials(url, user, password);
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) {
    std::cerr << "usage: credentials SERVER USER ADDRESS\n";
    return 2;
  }
  user = arguments[2];
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  settings.authenticationTries = 3;
  du::http::SetTransportSettings(settings);
  VtDirectManager::RegisterAuth(AskForPassword);
  VtDirectManager::UpdateServerList({{"plm", arguments[1]}});

  const std::string uid = VtDirectManager::GetUID(arguments[3]);
  du::http::ClearAllCredentials();
  if (uid.empty()) {
    std::cerr << "not found, or not allowed\n";
    return 1;
  }
  std::cout << uid << '\n';
  return 0;
}
