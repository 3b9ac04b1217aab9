#include "simulator/options.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <charconv>
#include <functional>
#include <string_view>

#include "simulator/store/xliff_preferences.h"
#include "simulator/wire/faults.h"

namespace vantry_sim {
namespace {

constexpr const char* seedForm =
    "--seed must be demo, empty, file:STATE or "
    "bulk:N[,folders=F][,depth=D][,versions=V][,name=A-B][,size=A-B] with up "
    "to 5000000 versions in all";

struct Raw {
  std::string seed = "demo";
  std::string generation = "schema5";
  std::string version = "12.0.2.0";
  std::vector<std::string> users;
  std::vector<std::string> tokens;
  std::vector<std::string> tls;
  bool sessions = false;
  std::uint32_t sessionSeconds = 1800;
  std::vector<std::string> faults;
  std::string xliffFolder = "cabinet";
  bool withoutTranslation = false;
  bool printVersion = false;
  std::string check;
};

template <typename Number>
std::optional<Number> WholeNumber(std::string_view text) {
  Number value{};
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || code != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

bool ReadSeed(std::string_view text, Seed& seed) {
  if (text == "demo") {
    seed.kind = Seed::Kind::Demo;
    return true;
  }
  if (text == "empty") {
    seed.kind = Seed::Kind::Empty;
    return true;
  }
  if (text.starts_with("file:") && text.size() > 5) {
    seed.kind = Seed::Kind::File;
    seed.file = text.substr(5);
    return true;
  }
  if (!text.starts_with("bulk:")) return false;
  const auto shape = ReadBulkShape(text.substr(5));
  if (shape) seed.bulk = *shape;
  seed.kind = Seed::Kind::Bulk;
  return shape.has_value();
}

bool ReadVersion(std::string_view text, VersionNumbers& version) {
  unsigned* const parts[] = {&version.major, &version.minor, &version.servicePack, &version.cps};
  for (std::size_t i = 0; i < 4; ++i) {
    const auto dot = i < 3 ? text.find('.') : text.size();
    if (dot == std::string_view::npos) return false;
    const auto number = WholeNumber<unsigned>(text.substr(0, dot));
    if (!number) return false;
    *parts[i] = *number;
    text.remove_prefix(i < 3 ? dot + 1 : dot);
  }
  return true;
}

bool ReadUser(std::string_view text, std::vector<UserCredentials>& users) {
  // The name ends at the first colon, as HTTP Basic has it; a password may hold more of them.
  const auto colon = text.find(':');
  if (colon == std::string_view::npos || colon == 0) return false;
  users.push_back({std::string(text.substr(0, colon)), std::string(text.substr(colon + 1))});
  return true;
}

/// One leading "/" and none at the end; false for characters that a path segment cannot hold unescaped.
bool NormalizePrefix(std::string& prefix) {
  while (!prefix.empty() && prefix.back() == '/') prefix.pop_back();
  if (prefix.empty()) return true;
  if (prefix.front() != '/') prefix.insert(0, "/");
  for (const char c : prefix) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (!letter && c != '/' && c != '-' && c != '_' && c != '.' && c != '~') return false;
  }
  return true;
}

std::string ReadTranslation(const Raw& raw, Options& options) {
  options.translation = !raw.withoutTranslation;
  if (raw.xliffFolder != "cabinet" && raw.xliffFolder != "path")
    return "--xliff-folder must be cabinet or path";
  options.xliffFolder = raw.xliffFolder == "path" ? XliffFolder::Path : XliffFolder::Cabinet;
  for (const std::string& name : options.missingPreferences) {
    // A misspelt name would leave nothing out, and a test with it would show nothing.
    if (!IsXliffPreference(name)) return "--without-preference: there is no XLIFF preference " + name;
  }
  return {};
}

/// The first thing wrong with the texts that CLI11 takes as they are; empty when all are read.
std::string ReadTexts(const Raw& raw, Options& options) {
  if (!ReadSeed(raw.seed, options.seed)) return seedForm;
  const auto generation = GenerationOf(raw.generation);
  if (!generation) return "--generation must be gateway, schema1, schema4 or schema5";
  options.generation = *generation;
  if (!ReadVersion(raw.version, options.version)) return "--version must be four numbers, such as 12.0.2.0";
  for (const std::string& user : raw.users) {
    // The text is not repeated: it may hold a password.
    if (!ReadUser(user, options.users)) return "--user must be NAME:PASSWORD";
  }
  for (const std::string& token : raw.tokens) {
    if (!ReadUser(token, options.tokens)) return "--token must be NAME:TOKEN";
  }
  if (options.digest && options.users.empty()) return "--digest needs a --user";
  if (raw.sessions) options.sessionSeconds = raw.sessionSeconds;
  if (!raw.tls.empty() && !options.tlsSelfSigned.empty())
    return "--tls and --tls-self-signed exclude each other";
  if (!raw.tls.empty()) {
    options.tlsCertificate = raw.tls[0];
    options.tlsKey = raw.tls[1];
  }
  if (const std::string error = ReadTranslation(raw, options); !error.empty()) return error;
  for (const std::string& fault : raw.faults) {
    std::string error;
    if (!ParseFaultRule(fault, &error)) return "--fault: " + error;
    options.faults.push_back(fault);
  }
  if (!NormalizePrefix(options.prefix)) return "--prefix must be a path such as /vt";
  while (!options.codebaseUrl.empty() && options.codebaseUrl.back() == '/') options.codebaseUrl.pop_back();
  if (options.codebaseUrl.find_first_of("\r\n") != std::string::npos)
    return "--codebase-url must be one line";
  return {};
}

void AddTranslationOptions(CLI::App& app, Raw& raw, Options& options) {
  app.add_flag("--without-translation", raw.withoutTranslation, "The translation add-on isn't installed");
  app.add_option("--without-preference", options.missingPreferences,
                 "Name of an XLIFF preference to leave out; may come often")
      ->type_name("NAME")
      ->expected(1)
      ->take_all();
  app.add_option("--xliff-folder", raw.xliffFolder,
                 "How the XLIFF preferences name the folder for uploads: cabinet or path")
      ->type_name("cabinet|path")
      ->capture_default_str();
}

void AddAccessOptions(CLI::App& app, Raw& raw, Options& options) {
  app.add_option("--user", raw.users,
                 "NAME:PASSWORD to let in; may come often; without it the server is open")
      ->type_name("NAME:PASSWORD")
      ->expected(1)
      ->take_all();
  app.add_option("--token", raw.tokens, "NAME:TOKEN, a bearer token to let in; may come often")
      ->type_name("NAME:TOKEN")
      ->expected(1)
      ->take_all();
  app.add_flag("--digest", options.digest, "Passwords come by HTTP Digest and not by Basic");
  app.add_flag("--sessions", raw.sessions, "Sessions by cookie, each with a nonce of its own");
  app.add_option("--session-seconds", raw.sessionSeconds, "A session ends after so long without a request")
      ->type_name("N")
      ->check(CLI::Range(1, 1'000'000))
      ->capture_default_str();
  app.add_option("--tls", raw.tls, "Speak TLS with this certificate and its key, PEM files")
      ->type_name("CERT KEY")
      ->expected(2);
  app.add_option("--tls-self-signed", options.tlsSelfSigned,
                 "Speak TLS with cert.pem and key.pem in this directory, made if missing; only those that "
                 "were made so are renewed")
      ->type_name("DIR");
}

/// What goes wrong, what is allowed, and what is printed.
void AddRunOptions(CLI::App& app, Raw& raw, Options& options) {
  app.add_option("--fault", raw.faults,
                 "\"METHOD PATTERN=ACTION\", something that goes wrong, as the manual tells; may come often")
      ->type_name("RULE")
      ->expected(1)
      ->take_all();
  app.add_option("--max-connections", options.maxConnections, "Most connections at one time")
      ->type_name("N")
      ->check(CLI::Range(16, 1'000'000))
      ->capture_default_str();
  app.add_option("--max-upload", options.maxUploadBytes,
                 "Most bytes of a request's body; beyond it comes 413")
      ->type_name("BYTES");
  app.add_option("--log", options.logFile, "File to append one line of JSON to for each request")
      ->type_name("FILE");
  app.add_option("--check", raw.check, "Look at a state file, say what is wrong with it, and exit")
      ->type_name("STATE");
  app.add_flag("--version-info", raw.printVersion, "Print the program's own version and exit");
}

void AddOptions(CLI::App& app, Raw& raw, Options& options) {
  app.set_help_flag("--help,-h", "Print this and exit");
  app.add_option("--bind", options.bindAddress, "Address to listen on")
      ->type_name("ADDRESS")
      ->capture_default_str();
  app.add_option("--port", options.port, "Port; 0 picks a free one")
      ->type_name("PORT")
      ->check(CLI::Range(0, 65535))
      ->capture_default_str();
  app.add_option("--data", options.dataDirectory,
                 "Directory of the database and the contents; made if missing")
      ->type_name("DIR")
      ->required();
  app.add_option("--seed", raw.seed,
                 "Fill a new data directory with demo, empty, file:STATE or bulk:N[,SHAPE]")
      ->type_name("demo|empty|file:STATE|bulk:N")
      ->capture_default_str();
  app.add_option("--large", options.seed.largeBytes, "Bytes of the demo's large content, D1009")
      ->type_name("BYTES")
      ->capture_default_str();
  app.add_option("--generation", raw.generation, "Which services the server offers")
      ->type_name("gateway|schema1|schema4|schema5")
      ->capture_default_str();
  AddAccessOptions(app, raw, options);
  app.add_option("--version", raw.version, "Server version to tell, as four numbers")
      ->type_name("A.B.C.D")
      ->capture_default_str();
  app.add_option("--codebase-url", options.codebaseUrl, "Address that the server calls its own")
      ->type_name("URL");
  app.add_option("--prefix", options.prefix, "Path in front of every route, such as /vt")->type_name("PATH");
  app.add_option("--latency", options.latencyMilliseconds, "Milliseconds to wait before each answer")
      ->type_name("MS");
  app.add_option("--page-size", options.pageSize, "Most rows of a page of OData")
      ->type_name("N")
      ->check(CLI::Range(1, 1'000'000))
      ->capture_default_str();
  app.add_option("--page-port", options.pagePort, "Second port, where lists go on; 0 picks a free one")
      ->type_name("PORT")
      ->check(CLI::Range(0, 65535));
  app.add_option("--admin-port", options.adminPort,
                 "Port of 127.0.0.1 to control the server by; 0 picks a free one")
      ->type_name("PORT")
      ->check(CLI::Range(0, 65535));
  app.add_option("--upload-port", options.uploadPort,
                 "Port that takes the bytes of documents; 0 picks a free one")
      ->type_name("PORT")
      ->check(CLI::Range(0, 65535))
      ->capture_default_str();
  app.add_flag("--old-creation-factory", options.oldCreationFactory,
               "The creation factory answers at its old address alone");
  app.add_flag("--gateway-escapes", options.gatewayEscapes,
               "The gateway lists names escaped, as newer ones do");
  AddTranslationOptions(app, raw, options);
  AddRunOptions(app, raw, options);
}

CommandLine Printed(std::string text, int exitCode) {
  CommandLine line;
  line.text = std::move(text);
  line.exitCode = exitCode;
  return line;
}

/// Parses, and turns what CLI11 throws into what is to be printed. Nothing when all was read.
std::optional<CommandLine> Parse(CLI::App& app, int argc, const char* const* argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return Printed(app.help(), 0);
  } catch (const CLI::ExtrasError&) {
    // In their order, which the parser's own text turns round.
    std::string words;
    for (const std::string& word : app.remaining(true)) words += " " + word;
    return Printed("vantry-sim: not expected:" + words + "; see --help\n", 2);
  } catch (const CLI::ParseError& error) {
    return Printed(std::string("vantry-sim: ") + error.what() + "\n", 2);
  }
  return std::nullopt;
}

void AddExportOptions(CLI::App& app, ExportOptions& options, std::string& format) {
  app.set_help_flag("--help,-h", "Print this and exit");
  app.add_option("--data", options.dataDirectory, "Directory of the database and the contents")
      ->type_name("DIR")
      ->required();
  app.add_option("--out", options.out,
                 "File to write, with longer contents in FILE.files beside it, which is replaced only if all "
                 "in it is from an export")
      ->type_name("FILE");
  app.add_option("--format", format, "yaml or json; without it as the name of FILE says, or yaml")
      ->type_name("yaml|json");
}

/// `vantry-sim export ...`, of which `argv` begins with the second word.
CommandLine ParseExport(int argc, const char* const* argv) {
  CLI::App app{"vantry-sim export: write what a data directory holds as a state file"};
  ExportOptions options;
  std::string format;
  AddExportOptions(app, options, format);
  if (auto printed = Parse(app, argc, argv)) return std::move(*printed);
  if (format.empty()) format = options.out.ends_with(".json") ? "json" : "yaml";
  if (format != "yaml" && format != "json") return Printed("vantry-sim: --format must be yaml or json\n", 2);
  options.json = format == "json";
  CommandLine line;
  line.exportOptions = std::move(options);
  return line;
}

std::vector<OptionText> TextsOf(const CLI::App& app) {
  std::vector<OptionText> texts;
  for (const CLI::Option* option : app.get_options()) {
    OptionText text;
    for (const std::string& name : option->get_lnames()) text.names.push_back("--" + name);
    for (const std::string& name : option->get_snames()) text.names.push_back("-" + name);
    // After the word for the value comes what the parser checks of it.
    const std::string value = option->get_type_name();
    if (option->get_type_size() != 0) text.value = value.substr(0, value.find(":INT in "));
    text.about = option->get_description();
    text.defaultValue = option->get_default_str();
    texts.push_back(std::move(text));
  }
  return texts;
}

/// `--generate WHAT`, for whoever builds or packages the program.
CommandLine Generated(std::string_view what) {
  CommandLine line;
  line.printRoutes = what == "routes";
  if (what == "manual") line.text = TextsOfProgram().ManualPage();
  if (what == "completion") line.text = TextsOfProgram().BashCompletion();
  if (line.text.empty() && !line.printRoutes)
    return Printed("vantry-sim: --generate takes manual, completion or routes\n", 2);
  return line;
}

}  // namespace

ProgramTexts TextsOfProgram() {
  CLI::App server, exports;
  Raw raw;
  Options options;
  ExportOptions exportOptions;
  std::string format;
  AddOptions(server, raw, options);
  AddExportOptions(exports, exportOptions, format);
  return {TextsOf(server), TextsOf(exports)};
}

CommandLine ParseCommandLine(int argc, const char* const* argv) {
  if (argc == 3 && std::string_view(argv[1]) == "--generate") return Generated(argv[2]);
  if (argc > 1 && std::string_view(argv[1]) == "export") return ParseExport(argc - 1, argv + 1);
  Options options;
  Raw raw;
  CLI::App app{"vantry-sim: a Vantry server to try clients on"};
  AddOptions(app, raw, options);

  // Asking what the program is, or what a file says, needs no data directory, which is otherwise required.
  for (int i = 1; i < argc; ++i) {
    if (std::string_view(argv[i]) == "--version-info")
      return Printed("vantry-sim " VANTRY_SIM_VERSION "\n", 0);
    if (std::string_view(argv[i]) == "--check") {
      if (argc != 3 || i != 1)
        return Printed("vantry-sim: --check takes a state file, and nothing else\n", 2);
      CommandLine line;
      line.check = argv[2];
      return line;
    }
  }
  if (auto printed = Parse(app, argc, argv)) return std::move(*printed);
  if (const std::string error = ReadTexts(raw, options); !error.empty()) {
    return Printed("vantry-sim: " + error + "\n", 2);
  }
  options.seed.askedFor = app.count("--seed") > 0;
  CommandLine line;
  line.options = std::move(options);
  return line;
}

}  // namespace vantry_sim
