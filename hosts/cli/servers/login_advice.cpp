#include "hosts/cli/servers/login_advice.h"

#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {

LoginFacts LoginFactsOf(const Configuration& configuration, const Origin& origin) {
  LoginFacts facts;
  for (const auto& [nickname, url] : configuration.servers) {
    if (facts.nickname.empty() && OriginOf(url) == origin) facts.nickname = nickname;
  }
  facts.hasHelper = !SettingsFor(configuration, TextOf(origin)).credentialHelper.empty();
  return facts;
}

std::string HowToLogIn(const LoginFacts& facts) {
  if (facts.hasHelper && !facts.nickname.empty()) {
    return CommandToType("login", facts.nickname) + " has its credential helper keep a login";
  }
  return "set VTDIRECT_USER and VTDIRECT_PASSWORD or VTDIRECT_TOKEN, or list it in a netrc file";
}

std::string HowToLogInAnew(const LoginFacts& facts) {
  if (facts.hasHelper && !facts.nickname.empty()) {
    return CommandToType("login", facts.nickname) + " has its credential helper keep another login";
  }
  return "look at VTDIRECT_TOKEN, at VTDIRECT_USER and VTDIRECT_PASSWORD, and at the netrc file";
}

std::string HowToLogInAlso(const LoginFacts& meant, const LoginFacts& also) {
  if (meant.nickname.empty() || also.nickname.empty()) {
    return "if this one may have them too, name it in that server's login_also_for";
  }
  return "if this one may have them too, write login_also_for = " + also.nickname + " under [server " +
         meant.nickname + "] in the configuration file, or set VTDIRECT_SERVER_" + meant.nickname +
         "__LOGIN_ALSO_FOR=" + also.nickname;
}

}  // namespace vtdirect_cli
