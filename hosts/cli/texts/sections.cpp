#include "hosts/cli/commands/command.h"

namespace vtdirect_cli {

std::span<const SectionRow> Sections() {
  static const std::vector<SectionRow> rows = {
      {"ADDRESSES",
       "An ADDRESS is one text of either of two families.\n\n"
       "A path names an object by where it stands. NICK is the nickname of a listed server:\n\n"
       "  korvufenloom-vfs://NICK/Products/Bike/Folders/Frames/fork.lxz\n"
       "  //NICK/Products/Bike/Folders/Frames/fork.lxz\n\n"
       "A version may follow behind \"|\", and an object can be named by its id: //NICK/?id=D1001.\n\n"
       "A UID names an object by the server's identity of it:\n\n"
       "  korvufenloom-vt://plm.example/vt/?id=D1001&file=/fork.lxz\n\n"
       "The server in a UID must be listed too, under any nickname; no server is ever added by itself. "
       "Put an address in quotes: it holds characters that mean something to the shell."},
      {"SERVERS",
       "Servers are listed in the configuration file and by --server, which goes before the file. A "
       "nickname is not empty and holds no \"/\". A URL begins with https:// or http:// and holds no user "
       "name or password.\n\n"
       "The configuration file is $XDG_CONFIG_HOME/vtdirect/config, or ~/.config/vtdirect/config. It need "
       "not be there. Its form:\n\n"
       "  # a comment\n"
       "  [servers]\n"
       "  plm = https://plm.example/vt\n"
       "  archive = http://archive.example:8080/vt\n\n"
       "  [server plm]\n"
       "  client_cert = /home/joe/plm.pem\n"
       "  credential_helper = /usr/lib/git-core/git-credential-libsecret\n"
       "  max_time = 600\n\n"
       "What is said in a section of a server's own holds for scheme, host and port of its URL. All of it "
       "may "
       "be left out:\n\n"
       "  url                the URL, for a server that [servers] does not list\n"
       "  client_cert        file of the certificate that the server is shown\n"
       "  client_key         file of its key, when that is another\n"
       "  ca_file            trusted certificates in place of the system's, as --ca-file\n"
       "  proxy              URL of the proxy, or none for the direct way, as --proxy\n"
       "  negotiate          yes to be known by Kerberos\n"
       "  credential_helper  see CREDENTIALS\n"
       "  max_time           as --max-time, for commands on this server\n\n"
       "What the command line says goes before it. A --server that gives the nickname another scheme, host "
       "or "
       "port takes none of it along.\n\n"
       "A line that is none of these is a fault that ends the program with its file and line. So does a host "
       "and port that is listed under http and https: addresses do not tell them apart, and a password could "
       "go out in clear."},
      {"CREDENTIALS",
       "Credentials are used when a server demands them, and come from the first of these that has some; "
       "each is tried once, and what a server has refused isn't sent to it again:\n\n"
       "  1. VTDIRECT_TOKEN, a bearer token\n"
       "  2. VTDIRECT_USER and VTDIRECT_PASSWORD\n"
       "  3. the server's credential_helper\n"
       "  4. a netrc file: --netrc, else $NETRC, else ~/.netrc\n"
       "  5. a question at the terminal, three times at most\n\n"
       "They are never taken from the command line. With VTDIRECT_USER alone, the password for that user "
       "comes from the netrc file or the terminal. A netrc file that others than its owner may read or "
       "write is not used: with a warning, or as a failure when --netrc named it.\n\n"
       "A credential helper is a program that keeps passwords, a keyring or a password manager, and speaks "
       "the protocol of git's helpers. It is run by the shell as \"COMMAND get\" and is told protocol=, "
       "host= "
       "(with the port, unless it is the usual one) and, when VTDIRECT_USER is set, username=, one a line "
       "and "
       "then an empty line. It prints username= and password=, or nothing; quit=1 ends the search. What the "
       "server takes it is told with \"COMMAND store\", what was typed at the terminal too; what it gave and "
       "the "
       "server refused, with \"COMMAND erase\". A helper that prints anything else or has not ended after a "
       "minute is passed over with a warning. It can't ask at the terminal.\n\n"
       "Credentials go only to the servers that are listed and to the URL of check, by scheme, host and "
       "port; never to another address that a server names. The one exception is https on the same host "
       "in place of http, both at their usual ports."},
      {"OUTPUT",
       "Results alone go to standard output. Progress (only when standard error is a terminal), notes, "
       "warnings and failures go to standard error. What came from a server is shown with its control "
       "characters as \\xHH.\n\n"
       "With --json every result is one line of ASCII with one JSON object. \"schema\" is the version of "
       "its form, now 1: it rises when a member goes or changes its meaning, and stays when one is added. "
       "\"command\" is the command; the other members stand with the commands above. A listing prints its "
       "lines as the rows arrive.\n\n"
       "A failure is an object on standard error, with error (the name of the exit status), exit (its "
       "number) and message. Bytes that are no UTF-8 become U+FFFD."},
      {"ENVIRONMENT",
       "  VTDIRECT_TOKEN, VTDIRECT_USER, VTDIRECT_PASSWORD, NETRC: see CREDENTIALS\n"
       "  XDG_CONFIG_HOME, HOME: where the configuration file and the netrc file are looked for\n"
       "  XDG_STATE_HOME, HOME: where checkouts are kept, see checkouts\n"
       "  TMPDIR: where temporary files go, /tmp without it; content for standard output needs room "
       "there\n"
       "  FENLOOM_TRACE: what --trace takes, for when it isn't given\n"
       "  FENLOOM_LANGUAGE, LC_ALL, LC_MESSAGES, LANG: the language of the fixed words in paths\n"
       "  https_proxy, http_proxy, all_proxy, no_proxy: the way to the server\n"
       "  FENLOOM_XLIFF_BOUNDED_FOLDER_SCAN: see below\n\n"
       "vtdirect sets FENLOOM_XLIFF_BOUNDED_FOLDER_SCAN to 1 for itself when it isn't in the environment. "
       "Without it the library never ends its search for the folder of a first source XLIFF on a server "
       "whose preferences name that folder by a path; set it to the empty text to have the library as "
       "other hosts have it."},
      {"EXAMPLES",
       "  vtdirect check https://plm.example/vt\n"
       "  vtdirect -s plm=https://plm.example/vt get '//plm/Products/Bike/Folders/Frames/fork.lxz'\n"
       "  vtdirect get 'korvufenloom-vt://plm.example/vt/?id=D1001' -o - | sha256sum\n"
       "  vtdirect --json info '//plm/?id=D1001'\n"
       "  vtdirect ls -l '//plm/Products/Bike/Folders'\n"
       "  vtdirect tree --full-paths '//plm/Products/Bike' | sort\n"
       "  vtdirect versions '//plm/Products/Bike/Folders/Frames/fork.lxz'\n"
       "  vtdirect checkout '//plm/Products/Bike/Folders/Frames/fork.lxz'\n"
       "  vtdirect checkin '//plm/Products/Bike/Folders/Frames/fork.lxz'\n"
       "  vtdirect xliff put '//plm/?id=D1028' manual.xlf --language en\n"
       "  vtdirect xliff get '//plm/?id=D1028' --language de -o manual_de.xlf"},
  };
  return rows;
}

}  // namespace vtdirect_cli
