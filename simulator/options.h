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
  unsigned servicePack = 2;
  unsigned cps = 0;
};

/// What a new data directory is filled with.
struct Seed {
  enum class Kind { Demo, Empty, Bulk, File };
  Kind kind = Kind::Demo;
  BulkShape bulk;
  std::string file;                                ///< YAML or JSON
  bool askedFor = false;                           ///< the command line names it
  std::uint64_t largeBytes = 64ULL * 1024 * 1024;  ///< size of the demo's one large content
};

/// How the preferences for an upload of XLIFF name the folder that it goes to.
enum class XliffFolder {
  Cabinet,  ///< by the ids of a context's root and of the folder
  Path,     ///< by the folder's path
};

/// The command line, checked.
struct Options {
  std::string bindAddress = "127.0.0.1";
  int port = 8080;  ///< 0: any free one
  std::string dataDirectory;
  Seed seed;
  Generation generation = Generation::Schema5;
  std::vector<UserCredentials> users;           ///< without any, and without tokens, the server is open
  std::vector<UserCredentials> tokens;          ///< bearer tokens, as passwords
  bool digest = false;                          ///< passwords come by HTTP Digest
  std::optional<std::uint32_t> sessionSeconds;  ///< how long a silent session lives; nothing: no sessions
  std::string tlsCertificate;                   ///< file; empty: no TLS
  std::string tlsKey;
  std::string tlsSelfSigned;  ///< directory of a certificate of one's own; empty: none
  VersionNumbers version;
  std::string codebaseUrl;  ///< without "/" at the end; empty: none
  std::string prefix;       ///< "/vt", or empty
  std::uint32_t latencyMilliseconds = 0;
  std::uint32_t pageSize = 10'000;  ///< most rows of a page of OData
  std::optional<int> adminPort;     ///< where the server is controlled, on the loopback; nothing: nowhere
  std::optional<int> pagePort;      ///< a second port, for later pages; 0: any free one; nothing: none
  int uploadPort = 0;               ///< takes the bytes of documents; 0: any free one
  bool oldCreationFactory = false;  ///< uploads are asked for at the old address alone
  bool gatewayEscapes = false;      ///< the gateway lists names escaped
  bool translation = true;          ///< the translation add-on is installed
  XliffFolder xliffFolder = XliffFolder::Cabinet;
  std::vector<std::string> missingPreferences;  ///< names that the XLIFF preferences leave out
  std::size_t maxConnections = 16'384;          ///< at one time
  std::vector<std::string> faults;              ///< texts of rules
  std::optional<std::uint64_t> maxUploadBytes;  ///< nothing: no limit
  std::string logFile;                          ///< empty: no log
};

/// Whether the ports for clients speak TLS.
inline bool SpeaksTls(const Options& options) {
  return !options.tlsCertificate.empty() || !options.tlsSelfSigned.empty();
}

/// What `vantry-sim export` is to do.
struct ExportOptions {
  std::string dataDirectory;
  std::string out;    ///< file; empty: standard output
  bool json = false;  ///< and not YAML
};

/// What came of a command line: options to run with, something else to do, or a text to print and an exit
/// code.
struct CommandLine {
  std::optional<Options> options;
  std::optional<ExportOptions> exportOptions;
  std::string check;  ///< a state file to look at; empty: none
  bool printRoutes = false;
  std::string text;  ///< help, program version or what is wrong; ends in a line feed
  int exitCode = 0;
};

/// Reads the command line. Nothing is opened or created. `text` goes to standard output for an exit code of 0
/// and to standard error for any other (2: bad usage).
CommandLine ParseCommandLine(int argc, const char* const* argv);

/// What is told of the options, by the parser's own table.
ProgramTexts TextsOfProgram();

}  // namespace vantry_sim
