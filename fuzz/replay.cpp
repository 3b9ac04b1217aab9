#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

// In memory of its own, so that a reader beyond the end is seen.
void Run(const std::string& bytes, std::size_t size) {
  const std::vector<std::uint8_t> input(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

}  // namespace

// Runs the target over every file of the corpora, whole and, without --whole, cut off at every byte.
int main(int count, char** arguments) {
  const bool whole = count > 1 && std::strcmp(arguments[1], "--whole") == 0;
  int files = 0;
  for (int index = whole ? 2 : 1; index < count; ++index) {
    for (const auto& entry : std::filesystem::directory_iterator(arguments[index])) {
      std::ifstream file(entry.path(), std::ios::binary);
      const std::string bytes{std::istreambuf_iterator<char>(file), {}};
      for (std::size_t size = whole ? bytes.size() : 0; size <= bytes.size(); ++size) Run(bytes, size);
      ++files;
    }
  }
  std::printf("%d files replayed\n", files);
  return files > 0 ? 0 : 1;
}
