#pragma once

#include <string>

#include "platform/files.h"

namespace lxservices::cms_interface {

/// The file name of a local path, with its extension; empty for a path that ends in "/". Pure.
[[nodiscard]] inline std::string BareName(const std::string& localPath) {
  std::string name;
  du::FileSpec(localPath).GetFile(&name);
  return name;
}

}  // namespace lxservices::cms_interface
