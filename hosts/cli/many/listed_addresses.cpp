#include "hosts/cli/many/listed_addresses.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

// A million addresses fit.
constexpr std::size_t largestList = std::size_t{256} << 20U;

[[nodiscard]] int ReadAll(int descriptor, std::string& text) {
  char buffer[65536];
  for (;;) {
    const ssize_t count = read(descriptor, buffer, sizeof buffer);
    if (count == 0) return 0;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    text.append(buffer, static_cast<std::size_t>(count));
    if (text.size() > largestList) return EFBIG;
  }
}

[[nodiscard]] int ReadList(const std::string& file, std::string& text) {
  if (file == "-") return ReadAll(STDIN_FILENO, text);
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return errno;
  const int error = ReadAll(descriptor, text);
  close(descriptor);
  return error;
}

[[nodiscard]] bool TakesList(const CommandRow& command) {
  return std::any_of(command.options.begin(), command.options.end(),
                     [](const OptionRow& row) { return row.name == ArgumentName("from"); });
}

// What of a command may be given several times.
[[nodiscard]] ArgumentName ListedOperand(const CommandRow& command) {
  for (const OperandRow& row : command.operands) {
    if (row.count == Count::AtLeastOnce || row.count == Count::AnyNumber) return row.name;
  }
  return "ADDRESS";
}

}  // namespace

std::vector<OptionRow> FileListOptions() {
  return {
      {.name = "from",
       .value = "FILE",
       .repeatable = true,
       .completion = Completion::Files,
       .help = "Take the files that are named in this file too, one a line; \"-\" is standard input."},
      {.name = "null",
       .letter = '0',
       .help = "In the file of --from, a name ends with a zero byte and not with its line, as find -print0 "
               "writes it."}};
}

std::vector<OptionRow> ListOptions() {
  return {
      {.name = "from",
       .value = "FILE",
       .repeatable = true,
       .completion = Completion::Files,
       .help = "Take the addresses in this file too, one a line; \"-\" is standard input."},
      {.name = "null",
       .letter = '0',
       .help =
           "In the file of --from, an address ends with a zero byte and not with its line, as find -print0 "
           "writes it."}};
}

std::vector<std::string> AddressesOfList(std::string_view text, bool endWithZero) {
  std::vector<std::string> addresses;
  const char end = endWithZero ? '\0' : '\n';
  while (!text.empty()) {
    const std::size_t length = std::min(text.find(end), text.size());
    std::string_view address = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    if (!endWithZero && address.ends_with('\r')) address.remove_suffix(1);
    if (!address.empty()) addresses.emplace_back(address);
  }
  return addresses;
}

Result<Arguments> WithListedAddresses(const CommandRow& command, Arguments arguments) {
  if (!TakesList(command)) return arguments;
  if (!arguments.Has("from")) {
    if (!arguments.Has("null")) return arguments;
    return Failure{ExitCode::Usage, "--null tells the form of a list, and --from names none"};
  }
  const ArgumentName operand = ListedOperand(command);
  std::vector<std::string> listed = arguments.All(operand);
  for (const std::string& file : arguments.All("from")) {
    std::string text;
    if (const int error = ReadList(file, text); error != 0) {
      const std::string name = file == "-" ? "standard input" : Printable(file);
      return Failure{ExitCode::LocalFile, "cannot read the list in " + name + ": " + std::strerror(error)};
    }
    for (std::string& entry : AddressesOfList(text, arguments.Has("null"))) {
      listed.push_back(std::move(entry));
    }
  }
  arguments.Set(operand, std::move(listed));
  return arguments;
}

}  // namespace vtdirect_cli
