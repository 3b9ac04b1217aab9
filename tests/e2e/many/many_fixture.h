#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/e2e/cli/checkout_fixture.h"
#include "tests/e2e/cli/server_document.h"

namespace vtdirect_test {

/// The demo's folder of three documents, the one above it, and two folders that are both called Drivetrain.
inline constexpr const char* framePath = "//sim/Products/Trekking Bike/Folders/Frame/";
inline constexpr const char* bikePath = "//sim/Products/Trekking Bike/Folders/";
inline constexpr const char* drivetrainPath = "//sim/Products/Trekking Bike/Folders/Drivetrain/";
inline constexpr const char* otherDrivetrainPath =
    "//sim/Products/Lastenrad Gr\xC3\xB6\xC3\x9F"
    "e L/Folders/Drivetrain/";
inline constexpr const char* weldingPath = "//sim/Products/Trekking Bike/Folders/Frame/welding manual.xml";
inline constexpr const char* noSuchPath = "//sim/Products/Trekking Bike/Folders/Frame/none.lxz";

/// Works on many documents of a server with one command.
class ManyTest : public CheckoutTest {
 protected:
  /// The files below the current directory of the program, sorted.
  [[nodiscard]] std::vector<std::string> FilesHere() const {
    std::vector<std::string> files;
    const std::string here = Here("");
    for (const auto& entry : std::filesystem::recursive_directory_iterator(here)) {
      if (entry.is_regular_file()) files.push_back(entry.path().string().substr(here.size()));
    }
    std::sort(files.begin(), files.end());
    return files;
  }
  /// How many requests the server has logged whose lines hold a text.
  [[nodiscard]] std::size_t Requests(const std::string& text) const {
    const std::string log = server().Log();
    std::size_t count = 0;
    for (std::size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) ++count;
    return count;
  }
  [[nodiscard]] std::string BytesOf(const std::string& id) const { return DocumentOf(server(), id).bytes; }
};

}  // namespace vtdirect_test
