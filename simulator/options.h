#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulator/program_texts.h"
#include "simulator/seed/bulk_shape.h"
#include "simulator/store/generation.h"

namespace vantry_sim {

/// A name, and the password or the token that lets it in.
struct UserCredentials {
  std::string name;
  std::string password;
};

/// The four numbers that the server calls its version.
struct VersionNumbers {
  unsigned major = 12;
  unsigned minor = 0;
  unsigned service_pack = 2;
  unsigned cps = 0;
};

/// What a new data directory is filled with.
struct Seed {
  enum class Kind { kDemo, kEmpty, kBulk, kFile };
  Kind kind = Kind::kDemo;
  BulkShape bulk;
  std::string file;                                 ///< YAML or JSON
  bool asked_for = false;                           ///< the command line names it
  std::uint64_t large_bytes = 64ULL * 1024 * 1024;  ///< size of the demo's one large content
};

/// How the preferences for an upload of XLIFF name the folder that it goes to.
enum class XliffFolder {
  kCabinet,  ///< by the ids of a context's root and of the folder
  kPath,     ///< by the folder's path
};

/// The command line, checked.
struct Options {
  std::string bind_address = "127.0.0.1";
  int port = 8080;  ///< 0: any free one
  std::string data_directory;
  Seed seed;
  Generation generation = Generation::kSchema5;
  std::vector<UserCredentials> users;            ///< without any, and without tokens, the server is open
  std::vector<UserCredentials> tokens;           ///< bearer tokens, as passwords
  bool digest = false;                           ///< passwords come by HTTP Digest
  std::optional<std::uint32_t> session_seconds;  ///< how long a silent session lives; nothing: no sessions
  std::string tls_certificate;                   ///< file; empty: no TLS
  std::string tls_key;
  std::string tls_self_signed;  ///< directory of a certificate of one's own; empty: none
  VersionNumbers version;
  std::string codebase_url;  ///< without "/" at the end; empty: none
  std::string prefix;        ///< "/vt", or empty
  std::uint32_t latency_milliseconds = 0;
  std::uint32_t page_size = 10'000;   ///< most rows of a page of OData
  std::optional<int> admin_port;      ///< where the server is controlled, on the loopback; nothing: nowhere
  std::optional<int> page_port;       ///< a second port, for later pages; 0: any free one; nothing: none
  int upload_port = 0;                ///< takes the bytes of documents; 0: any free one
  bool old_creation_factory = false;  ///< uploads are asked for at the old address alone
  bool gateway_escapes = false;       ///< the gateway lists names escaped
  bool translation = true;            ///< the translation add-on is installed
  XliffFolder xliff_folder = XliffFolder::kCabinet;
  std::vector<std::string> missing_preferences;   ///< names that the XLIFF preferences leave out
  std::size_t max_connections = 16'384;           ///< at one time
  std::vector<std::string> faults;                ///< texts of rules
  std::optional<std::uint64_t> max_upload_bytes;  ///< nothing: no limit
  std::string log_file;                           ///< empty: no log
};

/// Whether the ports for clients speak TLS.
inline bool SpeaksTls(const Options& options) {
  return !options.tls_certificate.empty() || !options.tls_self_signed.empty();
}

/// What `vantry-sim export` is to do.
struct ExportOptions {
  std::string data_directory;
  std::string out;    ///< file; empty: standard output
  bool json = false;  ///< and not YAML
};

/// What came of a command line: options to run with, something else to do, or a text to print and an exit
/// code.
struct CommandLine {
  std::optional<Options> options;
  std::optional<ExportOptions> export_options;
  std::string check;  ///< a state file to look at; empty: none
  bool print_routes = false;
  std::string text;  ///< help, program version or what is wrong; ends in a line feed
  int exit_code = 0;
};

/// Reads the command line. Nothing is opened or created. `text` goes to standard output for an exit code of 0
/// and to standard error for any other (2: bad usage).
CommandLine ParseCommandLine(int argc, const char* const* argv);

/// What is told of the options, by the parser's own table.
ProgramTexts TextsOfProgram();

}  // namespace vantry_sim
