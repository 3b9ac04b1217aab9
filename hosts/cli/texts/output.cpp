#include "hosts/cli/texts/output.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <unistd.h>

#include <cerrno>
#include <ostream>

#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/texts/progress_line.h"

namespace vtdirect_cli {
namespace {

// Raised when a key goes or changes its meaning; new keys come without a raise.
constexpr int jsonSchema = 2;

// Often enough for whoever watches a slow listing in a pipe.
constexpr std::chrono::milliseconds betweenPieces(100);

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer, rapidjson::UTF8<>, rapidjson::ASCII<>>;

void WriteText(JsonWriter& writer, const std::string& text) {
  const std::string valid = ValidUtf8(text);
  writer.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
}

struct ValueWriter {
  JsonWriter& writer;
  void operator()(const std::string& text) const { WriteText(writer, text); }
  void operator()(bool flag) const { writer.Bool(flag); }
  void operator()(std::uint64_t number) const { writer.Uint64(number); }
  void operator()(const std::vector<std::string>& texts) const {
    writer.StartArray();
    for (const std::string& text : texts) WriteText(writer, text);
    writer.EndArray();
  }
};

struct ValueText {
  std::string operator()(const std::string& text) const { return Printable(text); }
  std::string operator()(bool flag) const { return flag ? "yes" : "no"; }
  std::string operator()(std::uint64_t number) const { return std::to_string(number); }
  std::string operator()(const std::vector<std::string>& texts) const {
    std::string out;
    for (const std::string& text : texts) out += (out.empty() ? "" : " ") + Printable(text);
    return out;
  }
};

void AppendReason(const Reason& reason, Record& record) {
  record.emplace_back("kind", std::string(VtDirectManager::FailureKindText(reason.kind)));
  record.emplace_back("step", reason.step);
  if (reason.httpStatus > 0)
    record.emplace_back("http_status", static_cast<std::uint64_t>(reason.httpStatus));
  if (!reason.serverText.empty()) record.emplace_back("server_text", reason.serverText);
}

[[nodiscard]] Record RecordOf(const Failure& failure) {
  Record record{{"error", std::string(ClassOf(failure))},
                {"exit", static_cast<std::uint64_t>(failure.code)},
                {"message", failure.Text()},
                {"retryable", IsRetryable(failure)}};
  if (!failure.advice.empty()) record.emplace_back("advice", failure.advice);
  if (failure.reason) AppendReason(*failure.reason, record);
  if (const auto open = MayHaveHappened(failure)) record.emplace_back("may_have_happened", *open);
  return record;
}

[[nodiscard]] std::string RowLine(const Record& record) {
  std::string line;
  const char* separator = "";
  for (const auto& [key, value] : record) {
    line += separator + TextOf(value);
    separator = "\t";
  }
  return line + "\n";
}

// What a listing is sorted by: what it shows, or what only its JSON tells.
[[nodiscard]] std::string ValueOf(const Record& shown, const Record& json, const std::string& key) {
  for (const Record* record : {&shown, &json}) {
    for (const auto& [name, value] : *record) {
      if (name == key) return TextOf(value);
    }
  }
  return {};
}

}  // namespace

std::string JsonLine(const std::string& command, const Record& record) {
  rapidjson::StringBuffer buffer;
  JsonWriter writer(buffer);
  writer.StartObject();
  writer.Key("schema");
  writer.Int(jsonSchema);
  writer.Key("command");
  WriteText(writer, command);
  for (const auto& [key, value] : record) {
    WriteText(writer, key);
    std::visit(ValueWriter{writer}, value);
  }
  writer.EndObject();
  return JsonWithoutDelete({buffer.GetString(), buffer.GetSize()});
}

std::string FailureLine(const std::string& command, bool json, Failure failure) {
  if (!json) return "vtdirect: " + Printable(failure.Text()) + "\n";
  const bool timedOut = failure.code == ExitCode::Interrupted && TimeIsOver();
  if (timedOut) failure.code = ExitCode::TimedOut;
  return JsonLine(command, RecordOf(failure)) + "\n";
}

std::string WarningLine(const std::string& command, bool json, const std::string& text) {
  if (!json) return "vtdirect: warning: " + Printable(text) + "\n";
  return JsonLine(command, {{"warning", text}}) + "\n";
}

std::string TextOf(const Value& value) {
  return std::visit(ValueText{}, value);
}

void Output::Configure(std::string command, bool json, bool quiet) {
  command_ = std::move(command);
  json_ = json;
  quiet_ = quiet;
}

void Output::Lines(const Record& record) {
  if (json_ || held_ != nullptr) return JsonOnly(record);
  for (const auto& [key, value] : record) out_ << key << ": " << TextOf(value) << '\n';
}

void Output::Row(const Record& record) {
  Row(record, record);
}

void Output::Row(const Record& shown, const Record& json) {
  if (held_ == nullptr && (table_ || makesRows_)) return AddRow(shown, json);
  if (json_ || held_ != nullptr) return JsonOnly(json);
  out_ << RowLine(shown);
}

void Output::BeginListing(Screen screen, std::string sortBy) {
  if (json_) screen = {};
  sortBy_ = std::move(sortBy);
  if (screen.isTerminal || !sortBy_.empty()) table_.emplace(screen, !sortBy_.empty());
}

void Output::EndListing() {
  if (table_) out_ << table_->End();
  table_.reset();
}

void Output::AddRow(const Record& shown, const Record& json) {
  TableRow row;
  for (const auto& [key, value] : shown) {
    row.keys.push_back(key);
    row.cells.push_back(TextOf(value));
  }
  row.line = json_ ? JsonLine(command_, json) + "\n" : RowLine(shown);
  row.sortKey = ValueOf(shown, json, sortBy_);
  if (makesRows_) {
    rows_.push_back(std::move(row));
  } else {
    TakeRow(std::move(row));
  }
}

void Output::TakeRow(TableRow row) {
  out_ << table_->Add(std::move(row), Table::Clock::now());
}

// Something else is to be written, and belongs after the rows that have come.
void Output::ShowHeldRows() {
  if (!table_) return;
  out_ << table_->ShowHeld() << std::flush;
}

void Output::JsonOnly(const Record& record) {
  if (held_ != nullptr) {
    held_->result = record;
  } else if (json_) {
    out_ << JsonLine(command_, record) << '\n';
  }
}

void Output::Note(const std::string& text) {
  if (quiet_ || json_ || held_ != nullptr) return;
  ShowHeldRows();
  err_ << "vtdirect: " << Printable(text) << std::endl;
}

void Output::NoteToWatcher(const std::string& text) {
  if (TerminalWidth() != 0) Note(text);
}

void Output::Warning(const std::string& text) {
  ShowHeldRows();
  err_ << WarningLine(command_, json_, text) << std::flush;
}

ExitCode Output::Fail(const Failure& failure) {
  if (held_ != nullptr) {
    held_->failure = failure;
    return failure.code;
  }
  ShowHeldRows();
  err_ << FailureLine(command_, json_, failure) << std::flush;
  failures_.push_back(failure);
  // A task that has failed is not the end of the command, which may still run out of time.
  if (!isPart_) TellNothingOfTheLimit();
  return failure.code;
}

void Output::Separate() {
  if (!json_) out_ << '\n';
}

bool Output::Pass(const std::string& out, const std::string& err, std::vector<TableRow> rows) {
  // In the order in which they are read on a terminal: what was found, then what was not.
  for (TableRow& row : rows) TakeRow(std::move(row));
  if (!out.empty() || !err.empty()) ShowHeldRows();
  out_ << out;
  const bool written = FlushRow();
  err_ << err << std::flush;
  return written;
}

bool Output::Flush() {
  if (!out_.good()) return false;
  errno = 0;
  out_.flush();
  if (!out_.good()) nobodyReads_ = errno == EPIPE;
  lastFlush_ = std::chrono::steady_clock::now();
  return out_.good();
}

bool Output::FlushRow() {
  if (!out_.good()) return Flush();
  const bool isDue = std::chrono::steady_clock::now() - lastFlush_ >= betweenPieces;
  return isDue || isatty(STDOUT_FILENO) == 1 ? Flush() : true;
}

}  // namespace vtdirect_cli
