#include "connection/server_version.h"

namespace lxservices::cms_interface::vantry {
namespace {

std::string FormatServicePack(std::uint32_t servicePack) {
  if (servicePack == 0) return "F000";
  std::string digits = std::to_string(servicePack);
  if (digits.size() < 3) digits.insert(0, 3 - digits.size(), '0');
  return "M" + digits;
}

}  // namespace

std::string FormatServerVersion(const ServerVersion& version) {
  std::string text = std::to_string(version.major) + "." + std::to_string(version.minor) + " " +
                     FormatServicePack(version.servicePack);
  if (version.cps != 0) text += " CPS " + std::to_string(version.cps);
  return text;
}

}  // namespace lxservices::cms_interface::vantry
