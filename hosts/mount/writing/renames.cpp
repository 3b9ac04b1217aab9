#include "hosts/mount/writing/renames.h"

#include <vtdirect/vt_direct_manager.h>

#include <cerrno>

namespace vtdirect_mount {

// Whether what is renamed to an address is for this machine alone. A document of the server is none of a program's
// own files, whatever its name looks like.
Renames::Stay Renames::StayOf(const std::string& address) const {
  if (!parts_.scratch.Has(NameOf(address))) return {};
  const auto there = parts_.overlay.Find(address);
  if (there != nullptr) return {.isHere = there->isScratch()};
  const auto uid = parts_.mounted.uidOf(address);
  if (uid.value != nullptr) return {};
  if (uid.error == ENOENT) return {.isHere = true};
  return {.error = uid.error};
}

// What a document shows: the bytes that lie over it, or else those of its working copy.
Writable Renames::CopyOf(const std::string& document) {
  const auto local = parts_.overlay.Find(document);
  if (local == nullptr) {
    const auto required = parts_.checkouts.Require(document);
    if (required.error != 0) return {required.error};
    Writable copy = parts_.files.MakeOf(parts_.checkouts.ReadBy(required.uid));
    if (copy.file != nullptr) copy.file->SetBase(required.base);
    return copy;
  }
  Writable copy = parts_.files.MakeEmpty();
  if (copy.file == nullptr) return copy;
  copy.file->SetBase(local->base());
  if (!CopyBytes(*local, *copy.file)) return {EIO};
  return copy;
}

// Where a program makes a backup of a document by renaming it, the backup is a copy on this machine, and the
// name of the document is free for a new file. Bytes that wait to be stored go on waiting for their document:
// what the program saves under its name takes their place, and without that they are there again.
int Renames::SetAside(const std::string& document, const std::string& backup) {
  const Writable copy = CopyOf(document);
  if (copy.file == nullptr) return copy.error;
  copy.file->SetScratch(true);
  static_cast<void>(parts_.overlay.Lay(backup, copy.file));
  if (const auto local = parts_.overlay.Find(document); local != nullptr && !local->isDirty()) {
    parts_.overlay.Take(document, local);
  }
  parts_.overlay.PutAside(document, copy.file->base(), Overlay::Clock::now());
  return 0;
}

int Renames::MoveOnto(const std::string& from, const std::string& to,
                      const std::shared_ptr<LocalFile>& file) {
  const Stay stay = StayOf(to);
  if (stay.error != 0) return stay.error;
  if (!stay.isHere) {
    if (file->failedWrite() != 0) return file->failedWrite();
    const auto required = parts_.checkouts.Require(to);
    const bool isNew = required.error == ENOENT;
    if (required.error != 0 && !isNew) return required.error;
    if (isNew && !VtDirectManager::IsPathWritable(to.c_str())) return EPERM;
    file->SetBase(isNew ? vtdirect_cli::baseOfNewDocument : required.base);
  }
  file->SetScratch(stay.isHere);
  parts_.waiting.LayOver(to, file);
  parts_.overlay.Take(from, file);
  if (stay.isHere) {
    parts_.waiting.StrikeReplaced(*file);
    parts_.waiting.Strike(*file);
    return 0;
  }
  file->NoteChange(Due::AtNextClose);
  return parts_.stores.Store(file);
}

// A document keeps its name, also one that has new bytes here. A file that the server has never had is free to go.
int Renames::Rename(const std::string& from, const std::string& to) {
  if (from == to) return 0;
  const auto file = parts_.overlay.Find(from);
  if (file != nullptr && file->isScratch()) return MoveOnto(from, to, file);
  const Stay stay = StayOf(to);
  if (stay.isHere) return SetAside(from, to);
  if (stay.error != 0) return stay.error;
  if (file == nullptr) return EPERM;
  const auto uid = parts_.mounted.uidOf(from);
  if (uid.value != nullptr) return EPERM;
  return uid.error == ENOENT ? MoveOnto(from, to, file) : uid.error;
}

int Renames::Remove(const std::string& address) {
  const auto file = parts_.overlay.Find(address);
  if (file == nullptr) return EPERM;
  if (!file->isScratch()) {
    // A document's UID, or that it can't be told.
    if (parts_.mounted.uidOf(address).error != ENOENT) return EPERM;
    // A program that has it open may go on to write to it, and closes it.
    parts_.waiting.StrikeForGood(*file);
    parts_.waiting.Remove(address);
  }
  parts_.waiting.StrikeReplaced(*file);
  file->DropContent();
  parts_.overlay.Take(address, file);
  return 0;
}

}  // namespace vtdirect_mount
