#include "hosts/cli/commands/command.h"

namespace vtdirect_cli {

std::string Arguments::Text(ArgumentName name) const {
  const auto found = values_.find(name);
  return found == values_.end() || found->second.empty() ? "" : found->second.back();
}

std::vector<std::string> Arguments::All(ArgumentName name) const {
  const auto found = values_.find(name);
  return found == values_.end() ? std::vector<std::string>{} : found->second;
}

std::string UsageOf(const OperandRow& row) {
  const std::string name = row.name.text();
  if (row.count == Count::AnyNumber) return "[" + name + "...]";
  if (row.count == Count::AtMostOnce) return "[" + name + "]";
  return row.count == Count::AtLeastOnce ? name + "..." : name;
}

std::vector<std::string> WordsOf(std::span<const OptionRow> rows, const Arguments& arguments) {
  std::vector<std::string> words;
  for (const OptionRow& row : rows) {
    if (!arguments.Has(row.name)) continue;
    const std::string option = "--" + std::string(row.name.text());
    if (row.value == nullptr) {
      words.push_back(option);
      continue;
    }
    for (const std::string& value : arguments.All(row.name)) words.insert(words.end(), {option, value});
  }
  return words;
}

const char* NameOf(MemberType type) {
  switch (type) {
    case MemberType::Flag:
      return "flag";
    case MemberType::Number:
      return "number";
    case MemberType::Texts:
      return "texts";
    default:
      return "text";
  }
}

namespace {

constexpr const char* afterCall = "when a call of the library failed";

}  // namespace

std::span<const MemberRow> CommonMembers() {
  static const std::vector<MemberRow> rows = {
      {"schema", MemberType::Number, nullptr, "version of the form, now 2"},
      {"command", MemberType::Text, nullptr, "the command"},
  };
  return rows;
}

std::span<const MemberRow> FailureMembers() {
  static const std::vector<MemberRow> rows = {
      {"error", MemberType::Text, nullptr, "the class of the failure: a name of the list below"},
      {"exit", MemberType::Number, nullptr, "the exit status"},
      {"message", MemberType::Text, nullptr, "what happened and what to do, for a reader"},
      {"retryable", MemberType::Flag, nullptr,
       "whether the same command can be given again as it is, and may succeed then"},
      {"advice", MemberType::Text, "when there is something to do",
       "the end of the message: what to do next"},
      {"kind", MemberType::Text, afterCall, "what went wrong there, in words: \"not found\", \"timed out\""},
      {"step", MemberType::Text, afterCall, "what was being done: \"check in\""},
      {"http_status", MemberType::Number, "when the server answered", "the status of its answer"},
      {"server_text", MemberType::Text, "when the server told more", "the start of what it said"},
      {"may_have_happened", MemberType::Flag,
       "when a call of the library failed, or a command that changes something was interrupted",
       "whether a change may have been carried out although it failed; to be looked at before it is sent "
       "again"},
  };
  return rows;
}

std::span<const MemberRow> WarningMembers() {
  static const std::vector<MemberRow> rows = {
      {"warning", MemberType::Text, nullptr, "what went wrong and did not stop the command, for a reader"},
  };
  return rows;
}

std::span<const MemberRow> Vocabulary() {
  static const std::vector<MemberRow> rows = {
      {"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
      {"kind", MemberType::Text, nullptr, "document, folder or server"},
      {"name", MemberType::Text, nullptr, "the name as it is in a path, escaped"},
      {"title", MemberType::Text, nullptr, "the document's name that people gave it, free text"},
      {"path", MemberType::Text, nullptr, "the object's own path; a folder's closes with \"/\""},
      {"folder", MemberType::Text, nullptr, "path of the folder that holds the document"},
      {"uid", MemberType::Text, nullptr, "the UID to go on with, of the object that the line is about"},
      {"document", MemberType::Text, nullptr, "the document's UID as it was before its checkout"},
  };
  return rows;
}

std::span<const CommandRow> Commands() {
  static const std::vector<CommandRow> rows = {
      LsCommand(),        TreeCommand(),         FindCommand(),     InfoCommand(),        StatusCommand(),
      VersionsCommand(),  UidCommand(),          PathCommand(),     UrlCommand(),         GetCommand(),
      CheckoutCommand(),  PutCommand(),          CheckinCommand(),  EditCommand(),        UndoCommand(),
      VerifyCommand(),    CheckoutsCommand(),    RecoverCommand(),  CloneCommand(),       StCommand(),
      PullCommand(),      CommitCommand(),       RevertCommand(),   DiffCommand(),        LogCommand(),
      MountCommand(),     RefreshCommand(),      UnmountCommand(),  LinksCommand(),       OpenCommand(),
      BrowseUrlCommand(), EditUrlCommand(),      XliffPutCommand(), XliffSourceCommand(), XliffListCommand(),
      XliffGetCommand(),  XliffPublishCommand(), ServersCommand(),  LoginCommand(),       CheckCommand(),
      DoctorCommand(),    SupportBundleCommand()};
  return rows;
}

std::span<const HeadingRow> Headings() {
  static constexpr HeadingRow rows[] = {
      {"Look around", "ls"},
      {"Fetch, check out, store", "get"},
      {"Work folders", "clone"},
      {"A server as a directory", "mount"},
      {"Links and pages", "links"},
      {"Translations", "xliff put"},
      {"Servers and logins", "servers"},
  };
  return rows;
}

std::string ChoicesOf(const OptionRow& row) {
  std::string words;
  for (const char* choice : row.choices) words += (words.empty() ? "" : " ") + std::string(choice);
  return words;
}

CommandRow AsListing(CommandRow row, std::vector<const char*> columns, const char* help) {
  row.options.push_back({.name = "sort", .value = "COLUMN", .help = help, .choices = columns});
  row.columns = std::move(columns);
  return row;
}

std::span<const OptionRow> GlobalOptions() {
  static const std::vector<OptionRow> rows = {
      {.name = "server",
       .letter = 's',
       .value = "NICK=URL",
       .repeatable = true,
       .help = "List a server under a nickname, or give a listed nickname another URL. May be given several "
               "times."},
      {.name = "config",
       .letter = 'c',
       .value = "FILE",
       .completion = Completion::Files,
       .help = "Read this configuration file instead of the usual one."},
      {.name = "json",
       .letter = 'j',
       .help = "Print results, and on standard error a failure, as one JSON object a line."},
      {.name = "cad",
       .help = "Look at CAD documents too, where the server keeps them apart from dynamic documents."},
      {.name = "quiet", .letter = 'q', .help = "Show no progress and no notes."},
      {.name = "netrc",
       .value = "FILE",
       .completion = Completion::Files,
       .help = "Take credentials from this netrc file."},
      {.name = "no-prompt", .help = "Never ask for a password at the terminal."},
      {.name = "ca-file",
       .value = "FILE",
       .completion = Completion::Files,
       .help = "Trust the certificates in this PEM file instead of the system's."},
      {.name = "client-cert",
       .value = "FILE",
       .completion = Completion::Files,
       .help = "Show this certificate (PEM or PKCS#12) to the listed servers that ask for one."},
      {.name = "client-key",
       .value = "FILE",
       .completion = Completion::Files,
       .help = "The key of --client-cert in PEM form, when that file does not hold it."},
      {.name = "proxy",
       .value = "URL",
       .help = "Reach the servers by this proxy instead of the environment's; none for the direct way."},
      {.name = "connect-timeout",
       .value = "SECONDS",
       .help = "Longest time to set up a connection; 30 unless given."},
      {.name = "stall-timeout",
       .value = "SECONDS",
       .help = "Longest time in which no byte moves. Unless given: 60 for a question, 120 for a change, and "
               "a second "
               "more for each megabyte of a file that is sent, up to 900. A server that has been silent for "
               "so long "
               "gets 5 for each further question, until it answers one."},
      {.name = "max-time",
       .value = "SECONDS",
       .help = "End the command when so many seconds have passed, however far it has come."},
      {.name = "trace",
       .value = "LEVELS",
       .help = "Show the library's trace on standard error: digits of 0 information, 1 misses, 2 warnings, 3 "
               "errors."},
      {.name = "log-http",
       .value = "FILE",
       .completion = Completion::Files,
       .help =
           "Write the exchanges with the servers into this file, in the form HAR 1.2 and without secrets."},
      {.name = "help", .letter = 'h', .help = "Show a help text; of a command, when one is given."},
      {.name = "version", .help = "Show the version."},
  };
  return rows;
}

}  // namespace vtdirect_cli
