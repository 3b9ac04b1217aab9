// The files in which the command line keeps checkouts, changes under way and what was fetched: anybody may have
// edited them.
#include <filesystem>

#include "fuzz/support/input.h"
#include "fuzz/support/scratch_directory.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/journal.h"
#include "hosts/cli/files/fetch_record.h"
#include "hosts/cli/texts/tabbed_line.h"

using namespace vtdirect_cli;

namespace {

// What can be read as a line of fields is what the program itself would write.
void ReadAsLine(std::string_view line) {
  const auto fields = FieldsOfLine(line);
  if (fields) vtdirect_fuzz::Require(FieldsOfLine(LineOfFields(*fields)) == fields);
}

// Where the record of a file is, its name is not to be guessed: one is kept, and all there is overwritten.
void ReadAsRecord(std::string_view text) {
  const std::string directory = vtdirect_fuzz::Scratch().File("fetched");
  const FetchRecords records(directory);
  const std::string path = vtdirect_fuzz::Scratch().File("fork.lxz");
  if (!std::filesystem::exists(directory)) (void)records.Keep(path, {});
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    if (entry.is_regular_file()) vtdirect_fuzz::WriteScratchFile(entry.path().string(), text);
  }
  (void)records.Find(path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = vtdirect_fuzz::TextOf(data, size);
  ReadAsLine(text.substr(0, text.find('\n')));
  const std::string path = vtdirect_fuzz::Scratch().File("state");
  vtdirect_fuzz::WriteScratchFile(path, text);
  const BookContents contents = CheckoutBook(path).Read();
  vtdirect_fuzz::Require(contents.readable || !contents.fault.empty());
  const auto open = Journal(path).Open();
  vtdirect_fuzz::Require(open || !open.failure().message.empty());
  ReadAsRecord(text);
  return 0;
}
