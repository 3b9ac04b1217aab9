#pragma once

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "hosts/cli/failures/failure.h"
#include "hosts/cli/texts/table.h"

namespace vtdirect_cli {

using Value = std::variant<std::string, bool, std::uint64_t, std::vector<std::string>>;

/// One result: keys with their values, in the order in which they are shown.
using Record = std::vector<std::pair<std::string, Value>>;

/// One line of JSON without a line feed: "schema" and "command", then the record. ASCII only: every other
/// character is escaped, so no terminal is harmed.
[[nodiscard]] std::string JsonLine(const std::string& command, const Record& record);

/// One line, with its line feed, that tells of a failure on standard error: words for a reader, or JSON.
[[nodiscard]] std::string FailureLine(const std::string& command, bool json, Failure failure);

/// One line, with its line feed, that tells of what went wrong and didn't stop the command.
[[nodiscard]] std::string WarningLine(const std::string& command, bool json, const std::string& text);

/// The text of a value: a text as it can be shown on a terminal, "yes" or "no", a decimal number, texts
/// separated by blanks.
[[nodiscard]] std::string TextOf(const Value& value);

/// What a command has said while it was heard by another one, see OutputHold.
struct HeldOutput {
  Record result;  ///< the last one, as --json has it
  std::optional<Failure> failure;
};

/// What the program says. Results go to standard output and nothing else does; all the rest goes to standard
/// error.
class Output {
 public:
  Output(std::ostream& out, std::ostream& err) : out_(out), err_(err) {}

  /// For one of several tasks of a command: says it in the same way as `whole`, to other streams.
  Output(std::ostream& out, std::ostream& err, const Output& whole)
      : out_(out),
        err_(err),
        command_(whole.command_),
        json_(whole.json_),
        quiet_(whole.quiet_),
        sortBy_(whole.sortBy_),
        isPart_(true),
        makesRows_(whole.table_ || whole.makesRows_) {}

  /// @param json   results and failures as one JSON object a line
  /// @param quiet  no notes
  void Configure(std::string command, bool json, bool quiet);

  /// Shows the rows that come from now on as a listing. Without a terminal and a column to sort by they are
  /// written as they come.
  /// @param sortBy  key of a column; empty for the order in which the rows come
  void BeginListing(Screen screen, std::string sortBy);
  /// Writes what is left of it.
  void EndListing();
  /// The rows of one of several tasks, which are for the listing of the command.
  [[nodiscard]] std::vector<TableRow> TakeRows() { return std::exchange(rows_, {}); }

  [[nodiscard]] bool json() const { return json_; }
  [[nodiscard]] bool quiet() const { return quiet_; }
  void SetQuiet(bool quiet) { quiet_ = quiet; }

  /// A result as "key: value" lines, or as JSON.
  void Lines(const Record& record);
  /// A result as its values alone, separated by tabs on one line, or as JSON.
  void Row(const Record& record);
  /// A row that text mode shows in another way than JSON does.
  void Row(const Record& shown, const Record& json);
  /// A result that text mode does not show: JSON only.
  void JsonOnly(const Record& record);
  /// Something good to know. Standard error; neither with --quiet nor with --json.
  void Note(const std::string& text);
  /// Good to know for who looks on, as that a list is empty: a note on a terminal, and nothing elsewhere.
  void NoteToWatcher(const std::string& text);
  /// Something that went wrong and didn't stop the command. Standard error.
  void Warning(const std::string& text);
  /// Reports why the command failed on standard error, and gives the failure's code.
  ExitCode Fail(const Failure& failure);
  /// What has failed so far.
  [[nodiscard]] const std::vector<Failure>& failures() const { return failures_; }
  /// An empty line between two results of several lines each. Text mode only.
  void Separate();
  /// Writes what a task has said to streams of its own, and its rows.
  /// @return as FlushRow
  [[nodiscard]] bool Pass(const std::string& out, const std::string& err, std::vector<TableRow> rows = {});
  /// Lets a reader have the rows of a listing: at once on a terminal, elsewhere in large pieces and at least
  /// some times a second. False as Flush.
  [[nodiscard]] bool FlushRow();
  /// Whether results could not be written because nobody reads them any more, as after "| head".
  [[nodiscard]] bool nobodyReads() const { return nobodyReads_; }
  /// Lets a reader have what was printed so far. False when results could not be written: nobody reads them
  /// any more, or the disk is full.
  [[nodiscard]] bool Flush();

 private:
  friend class OutputHold;

  void AddRow(const Record& shown, const Record& json);
  void TakeRow(TableRow row);
  void ShowHeldRows();

  std::ostream& out_;
  std::ostream& err_;
  HeldOutput* held_ = nullptr;
  std::string command_;
  bool json_ = false;
  bool quiet_ = false;
  bool nobodyReads_ = false;
  std::optional<Table> table_;
  std::string sortBy_;
  bool isPart_ = false;
  bool makesRows_ = false;  ///< of a part: its rows go to the listing of the whole
  std::vector<TableRow> rows_;
  std::vector<Failure> failures_;
  std::chrono::steady_clock::time_point lastFlush_;
};

/// While one lives, results, notes and failures are not shown but handed to the command that runs another one
/// as a step of its own. Warnings are shown.
class OutputHold {
 public:
  explicit OutputHold(Output& output) : output_(output) { output_.held_ = &held_; }
  ~OutputHold() { output_.held_ = nullptr; }
  OutputHold(const OutputHold&) = delete;
  OutputHold& operator=(const OutputHold&) = delete;

  [[nodiscard]] const HeldOutput& held() const { return held_; }

 private:
  Output& output_;
  HeldOutput held_;
};

}  // namespace vtdirect_cli
