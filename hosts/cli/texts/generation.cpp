#include "hosts/cli/texts/generation.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>

#include "hosts/cli/texts/generated_texts.h"

namespace vtdirect_cli {
namespace {

/// One text that is made.
struct Generated {
  std::string_view name;
  std::string (*make)();
};

constexpr std::array<Generated, 5> texts{{{"manual", ManualPage},
                                          {"completion", BashCompletion},
                                          {"zsh-completion", ZshCompletion},
                                          {"fish-completion", FishCompletion},
                                          {"json-output", JsonDocument}}};

[[nodiscard]] ExitCode WritePages(const std::filesystem::path& directory) {
  std::error_code error;
  std::filesystem::create_directories(directory, error);
  for (const CommandRow& row : Commands()) {
    if (!HasOwnPage(row)) continue;
    const std::filesystem::path page = directory / (NameOfPage(row) + ".1");
    std::ofstream file(page, std::ios::binary);
    file << ManualPage(row) << std::flush;
    if (file.good()) continue;
    std::cerr << "vtdirect: cannot write " << page.string() << '\n';
    return ExitCode::LocalFile;
  }
  return ExitCode::Ok;
}

}  // namespace

std::optional<ExitCode> Generate(int argc, const char* const* argv) {
  if (argc < 3 || std::string_view(argv[1]) != "--generate") return std::nullopt;
  const std::string_view what = argv[2];
  if (argc == 4 && what == "manual-pages") return WritePages(argv[3]);
  for (const Generated& text : texts) {
    if (argc != 3 || what != text.name) continue;
    std::cout << text.make();
    return ExitCode::Ok;
  }
  return std::nullopt;
}

}  // namespace vtdirect_cli
