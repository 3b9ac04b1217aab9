#include "hosts/mount/writing/stores.h"

#include <unistd.h>
#include <vtdirect/vt_direct_manager.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "hosts/cli/files/fetch_record.h"

namespace vtdirect_mount {

// @param changes  how often the file had been changed when the store began
int Stores::NoteHalf(LocalFile& file, std::uint64_t changes) {
  const int error = file.failedWrite();
  file.NoteFailedStore(changes);
  parts_.mounted.log(file.address() + " is not stored: a write to it failed: " + std::strerror(error));
  parts_.waiting.Note(file, Written::MaybeHalf, std::string("a write failed: ") + std::strerror(error));
  return error;
}

// Whether a new document was made of these very bytes, and only the answer was lost.
bool Stores::IsWhatWasMade(const std::string& address, const LocalFile& file) {
  if (file.base() != vtdirect_cli::baseOfNewDocument) return false;
  const auto found = parts_.mounted.uidNow(address);
  if (found.value == nullptr) return false;
  const std::string& uid = *found.value;
  // What tells no length is downloaded each time that the file is tried again.
  const auto size = VtDirectManager::GetContentSize(uid.c_str());
  if (size && *size != file.size()) return false;
  const Writable made = parts_.files.MakeOf(uid);
  return made.file != nullptr && HaveSameBytes(*made.file, file);
}

// @return why it is not stored; empty when it is
std::string Stores::Put(const std::string& address, const LocalFile& file) {
  std::string fault = parts_.checkouts.WhyNotNow(address, file.base());
  if (!fault.empty()) return IsWhatWasMade(address, file) ? "" : fault;
  std::vector<std::string> command = {"put", "--quiet"};
  PinServer(address, command);
  command.insert(command.end(), {"--", file.path(), address});
  return parts_.runner.Run(command);
}

// @param changes  how often the file had been changed when the store began
void Stores::NoteStored(const std::string& address, const std::shared_ptr<LocalFile>& file,
                        std::uint64_t changes) {
  file->NoteStored(changes);
  const bool isWhole = !file->isDirty();
  if (isWhole) parts_.mounted.outdateStored(address, file->facts());
  if (!isWhole) parts_.mounted.outdate(address);
  if (file->isCreated() || file->base() == vtdirect_cli::baseOfNewDocument) {
    file->NoteCreated(parts_.mounted.uidStored(address));
  }
  parts_.waiting.StrikeReplaced(*file);
  if (!parts_.waiting.StrikeStored(*file)) return;
  vtdirect_cli::FetchRecords().Forget(file->path());
  // A program that has it open may go on to write; then it goes when that closes it.
  parts_.overlay.TakeIfIdle(address, file);
  parts_.waiting.Remove(address);
}

int Stores::Store(const std::shared_ptr<LocalFile>& file) {
  if (!file->isDirty() || file->isScratch() || file->isReplaced()) return 0;
  const std::string address = file->address();
  const std::uint64_t changes = file->changes();
  file->KeepContent();
  if (file->failedWrite() == 0 && fsync(file->file().descriptor()) != 0) file->NoteFailedWrite(errno);
  if (file->failedWrite() != 0) return NoteHalf(*file, changes);
  if (parts_.waiting.Note(*file, Written::Whole, unconfirmedStore) == 0) parts_.waiting.StrikeReplaced(*file);
  const std::string fault = Put(address, *file);
  if (fault.empty()) {
    NoteStored(address, file, changes);
    return 0;
  }
  parts_.mounted.log(address + " is not stored, and waits: " + fault);
  file->NoteFailedStore(changes);
  parts_.waiting.Note(*file, file->changes() == changes ? Written::Whole : Written::MaybeHalf, fault);
  parts_.waiting.Add(address);
  return EIO;
}

}  // namespace vtdirect_mount
