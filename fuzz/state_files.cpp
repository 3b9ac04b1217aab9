// The files in which the command line and the mount keep checkouts, changes under way, what was fetched, what waits to
// be stored and what is known of iterations: anybody may have edited them.
#include <filesystem>

#include "fuzz/support/input.h"
#include "fuzz/support/scratch_directory.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/journal.h"
#include "hosts/cli/files/fetch_record.h"
#include "hosts/cli/storing/unstored_files.h"
#include "hosts/cli/texts/tabbed_line.h"
#include "hosts/mount/cache/facts_file.h"

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

// What waits is told of, whatever its entry holds: somebody's work may lie beside it.
void ReadAsUnstored(std::string_view text) {
  const std::string directory = vtdirect_fuzz::Scratch().File("unstored");
  std::filesystem::create_directories(directory);
  vtdirect_fuzz::WriteScratchFile(directory + "/one.entry", text);
  const UnstoredFiles::Listing listing = UnstoredFiles(directory).List();
  vtdirect_fuzz::Require(listing.isComplete && listing.files.size() == 1 && listing.files[0].name == "one");
}

void ReadAsFacts(std::string_view text, const std::string& path) {
  vtdirect_fuzz::WriteScratchFile(path, text);
  vtdirect_mount::FactsFile facts(path);
  facts.Load();
  (void)facts.Find("korvufenloom-vt://plm.example/?id=D1001");
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
  ReadAsUnstored(text);
  ReadAsFacts(text, path);
  return 0;
}
