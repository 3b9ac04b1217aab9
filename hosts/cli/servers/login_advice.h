#pragma once

#include <string>

#include "hosts/cli/servers/origin.h"
#include "hosts/cli/servers/server_list.h"

namespace vtdirect_cli {

/// What an advice about the login of a server depends on.
struct LoginFacts {
  std::string nickname;    ///< one of the server's; empty if it is not listed
  bool hasHelper = false;  ///< a credential helper keeps its logins
};

/// The facts of the server at an origin. Makes no request.
[[nodiscard]] LoginFacts LoginFactsOf(const Configuration& configuration, const Origin& origin);

/// How to give a server credentials when there are none.
[[nodiscard]] std::string HowToLogIn(const LoginFacts& facts);

/// What to do when a server has refused the credentials.
[[nodiscard]] std::string HowToLogInAnew(const LoginFacts& facts);

/// How to let a server have the credentials of the environment that are meant for another.
[[nodiscard]] std::string HowToLogInAlso(const LoginFacts& meant, const LoginFacts& also);

}  // namespace vtdirect_cli
