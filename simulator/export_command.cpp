#include "simulator/export_command.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "simulator/seed/fixture_export.h"
#include "simulator/seed/fixture_reader.h"
#include "simulator/seed/fixture_writer.h"
#include "simulator/store/data_directory.h"

namespace vantry_sim {
namespace {

FixtureBytesForm FormFor(const std::string& out) {
  if (out.empty()) return {};
  const std::filesystem::path file = out;
  const std::string beside = file.filename().string() + ".files";
  return {FixtureBytesForm::Kind::Beside, file.parent_path() / beside, beside + "/"};
}

void WriteWhole(const std::string& file, const std::string& text) {
  // A reader never sees half of it.
  const std::string part = file + ".part";
  std::ofstream stream(part, std::ios::binary | std::ios::trunc);
  stream << text;
  stream.close();
  std::error_code error;
  if (stream) std::filesystem::rename(part, file, error);
  if (!stream || error) {
    std::filesystem::remove(part, error);
    throw std::runtime_error("cannot write " + file);
  }
}

std::string Counted(std::size_t count, const char* one, const char* more) {
  return std::to_string(count) + " " + (count == 1 ? one : more);
}

}  // namespace

void ExportState(const ExportOptions& options) {
  const auto data = DataDirectory::OpenFilled(options.dataDirectory);
  const Fixture fixture = ExportFixture(data->database(), data->contents());
  const auto out = options.json ? MakeJsonOutput() : MakeYamlOutput();
  WriteFixture(*out, fixture, FormFor(options.out));
  const std::string text = out->Take();
  if (!options.out.empty()) return WriteWhole(options.out, text);
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
    throw std::runtime_error("cannot write to standard output");
}

int CheckState(const std::string& file) {
  std::vector<FixtureProblem> problems;
  const auto fixture = ReadFixtureFile(file, problems);
  if (!fixture) {
    std::fprintf(stderr, "%s\n", TextOf(problems, file).c_str());
    return 1;
  }
  std::size_t versions = 0;
  for (const FixtureDocument& document : fixture->documents) versions += document.versions.size();
  std::printf("%s: %s, %s, %s in %s, %s\n", file.c_str(),
              Counted(fixture->users.size(), "user", "users").c_str(),
              Counted(fixture->contexts.size(), "context", "contexts").c_str(),
              Counted(fixture->documents.size(), "document", "documents").c_str(),
              Counted(versions, "version", "versions").c_str(),
              Counted(fixture->workspaces.size(), "workspace", "workspaces").c_str());
  return 0;
}

}  // namespace vantry_sim
