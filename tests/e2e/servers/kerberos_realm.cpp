#include "tests/e2e/servers/kerberos_realm.h"

#include <stdlib.h>

#include <stdexcept>

#include "tests/support/temporary_directory.h"
#include "tests/support/unused_port.h"

namespace vtdirect_test {
namespace {

constexpr const char* clientConfiguration = R"(
[libdefaults]
  default_realm = VTDIRECT.TEST
  dns_lookup_kdc = false
  dns_lookup_realm = false
  dns_canonicalize_hostname = false
  rdns = false
[realms]
  VTDIRECT.TEST = {
    kdc = 127.0.0.1:@PORT@
  }
)";

constexpr const char* kdcConfiguration = R"(
[kdcdefaults]
  kdc_listen = 127.0.0.1:@PORT@
  kdc_tcp_listen = 127.0.0.1:@PORT@
[realms]
  VTDIRECT.TEST = {
    database_name = @HOME@/principal
    key_stash_file = @HOME@/stash
    acl_file = @HOME@/acl
  }
)";

}  // namespace

std::string KerberosRealm::Missing() {
  std::string missing;
  for (const char* program : {"krb5kdc", "kdb5_util", "kadmin.local", "kinit"}) {
    if (FindProgram(program).empty()) missing += std::string(missing.empty() ? "" : ", ") + program;
  }
  return missing;
}

KerberosRealm::KerberosRealm(const std::string& directory) : directory_(directory), port_(UnusedPort()) {
  Configure();
  Run({FindProgram("kdb5_util"), "create", "-s", "-r", "VTDIRECT.TEST", "-P", "master"});
  Run({FindProgram("kadmin.local"), "-r", "VTDIRECT.TEST"},
      "addprinc -pw s3cret anna\naddprinc -randkey HTTP/localhost\nktadd -k " + keytab() +
          " HTTP/localhost\n");
  kdc_.emplace(std::vector<std::string>{FindProgram("krb5kdc"), "-n", "-r", "VTDIRECT.TEST"}, port_,
               directory_ + "/kdc.log");
}

void KerberosRealm::Configure() const {
  const std::map<std::string, std::string> values{{"HOME", directory_}, {"PORT", std::to_string(port_)}};
  WriteFile(directory_ + "/krb5.conf", Filled(clientConfiguration, values));
  WriteFile(directory_ + "/kdc.conf", Filled(kdcConfiguration, values));
  setenv("KRB5_CONFIG", (directory_ + "/krb5.conf").c_str(), 1);
  setenv("KRB5_KDC_PROFILE", (directory_ + "/kdc.conf").c_str(), 1);
  setenv("KRB5CCNAME", ("FILE:" + directory_ + "/tickets").c_str(), 1);
  // A server notes what it was shown, in a file of its own that would outlive the test.
  setenv("KRB5RCACHENAME", "none:", 1);
}

void KerberosRealm::LogIn() const {
  Run({FindProgram("kinit"), "anna"}, "s3cret\n");
}

void KerberosRealm::Run(const std::vector<std::string>& words, const std::string& input) const {
  const std::string log = directory_ + "/kerberos.log";
  if (RunProgram(words, log, input) != 0) throw std::runtime_error(words.at(0) + " failed: " + ReadFile(log));
}

}  // namespace vtdirect_test
