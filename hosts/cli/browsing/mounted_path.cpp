#include "hosts/cli/browsing/mounted_path.h"

#include <sys/xattr.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <string_view>

#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/files/escaped_name.h"

namespace vtdirect_cli {
namespace {

constexpr const char* addressAttribute = "user.vantry.address";
constexpr const char* mountAttribute = "user.vantry.mount";
constexpr const char* askedAnewAttribute = "user.vantry.asked_anew";
constexpr std::size_t longestAddress = 65'536;

// Empty for what lies in no mount, with the error number in errno. A copy by "cp -a" has the address too, and not what
// only a mount answers.
[[nodiscard]] std::string AddressAttribute(const std::string& path) {
  if (getxattr(path.c_str(), mountAttribute, nullptr, 0) <= 0) return {};
  std::string address(longestAddress, '\0');
  const ssize_t length = getxattr(path.c_str(), addressAttribute, address.data(), address.size());
  if (length <= 0) return {};
  address.resize(static_cast<std::size_t>(length));
  return address;
}

[[nodiscard]] bool TakesAddress(const OperandRow& operand) {
  return operand.name == "ADDRESS" || operand.name == "PATH";
}

}  // namespace

std::string AddressOfMounted(const std::string& text) {
  if (text.empty() || text.starts_with("//") || text.find("://") != std::string::npos) return text;
  std::string address = AddressAttribute(text);
  if (!address.empty()) return address;
  const std::size_t slash = text.rfind('/');
  const std::string name = slash == std::string::npos ? text : text.substr(slash + 1);
  if (errno != ENOENT || name.empty()) return text;
  address = AddressAttribute(DirectoryOf(text));
  return address.ends_with('/') ? address + NormalizedName(name) : text;
}

bool LiesInEndedMount(const std::string& path) {
  if (getxattr(path.c_str(), mountAttribute, nullptr, 0) >= 0) return false;
  return errno == ENOTCONN || errno == ECONNABORTED;
}

Arguments WithMountedAddresses(const CommandRow& command, Arguments arguments) {
  for (const OperandRow& operand : command.operands) {
    if (!TakesAddress(operand) || !arguments.Has(operand.name)) continue;
    std::vector<std::string> texts = arguments.All(operand.name);
    for (std::string& text : texts) text = AddressOfMounted(text);
    arguments.Set(operand.name, std::move(texts));
  }
  return arguments;
}

void AskMountsAnew(const CommandRow& command, const Arguments& arguments) {
  static constexpr std::string_view changing[] = {"checkout", "checkin", "put", "undo"};
  if (std::find(std::begin(changing), std::end(changing), std::string_view(command.name)) ==
      std::end(changing))
    return;
  for (const OperandRow& operand : command.operands) {
    if (!TakesAddress(operand) || !arguments.Has(operand.name)) continue;
    for (const std::string& text : arguments.All(operand.name)) {
      if (AddressOfMounted(text) != text) getxattr(text.c_str(), askedAnewAttribute, nullptr, 0);
    }
  }
}

}  // namespace vtdirect_cli
