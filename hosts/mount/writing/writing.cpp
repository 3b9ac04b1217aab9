#include "hosts/mount/writing/writing.h"

#include <unistd.h>
#include <vtdirect/vt_direct_manager.h>

#include <cerrno>
#include <ctime>
#include <utility>

namespace vtdirect_mount {

Writing::Writing(Settings settings, Mounted mounted)
    : settings_(std::move(settings)),
      mounted_(std::move(mounted)),
      runner_(settings_.command, settings_.directory),
      waiting_(mounted_, overlay_),
      files_(waiting_.unstored()),
      checkouts_(mounted_, runner_, settings_.autoCheckout),
      stores_({mounted_, runner_, files_, checkouts_, waiting_, overlay_}),
      renames_({mounted_, settings_.scratch, files_, checkouts_, waiting_, overlay_, stores_}),
      retries_([this] { BeginRetry(); }) {}

std::string Writing::Prepare(const std::string& below) {
  std::string fault = waiting_.Prepare(below);
  if (fault.empty()) RetryNow();
  return fault;
}

Writable Writing::Create(const std::string& address, const std::string& program) {
  const bool isScratch = settings_.scratch.HasNewOf(NameOf(address), program);
  if (!isScratch && !VtDirectManager::IsPathWritable(address.c_str())) return {EPERM};
  const Writable made = files_.MakeEmpty();
  if (made.file == nullptr) return made;
  made.file->SetScratch(isScratch);
  // An empty new file is a document too, once it is closed.
  made.file->SetAddress(address);
  const std::string base = overlay_.BaseOfAside(address);
  made.file->SetBase(base.empty() ? vtdirect_cli::baseOfNewDocument : base);
  made.file->NoteWriter();
  if (const int error = NoteChange(*made.file, Due::AfterNextChange); error != 0) return {error};
  waiting_.LayOver(address, made.file);
  return made;
}

// The last one stores a document that the mount has made, and that may be a store that was under way when the last
// program closed it. It looks only when it has let go, since somebody may leave his bytes to it until then.
void Writing::LetGo(const std::shared_ptr<LocalFile>& file) {
  const bool isLast = file->NoteWriterGone();
  if (isLast && file->isCreated() && file->isToBeStored()) StoreLeft(file);
  overlay_.TakeIfIdle(file->address(), file);
}

void Writing::Close(const std::shared_ptr<LocalFile>& file) {
  if (!file->isDirty() || file->isScratch() || file->isCreated()) return LetGo(file);
  NoteWhole(*file);
  if (waiting_.Has(file->address())) return LetGo(file);
  PostStore(file);
}

// What waits is tried again in any case.
void Writing::StoreLeft(const std::shared_ptr<LocalFile>& file) {
  NoteWhole(*file);
  if (waiting_.Has(file->address())) return;
  file->NoteWriter();
  PostStore(file);
}

void Writing::PostStore(const std::shared_ptr<LocalFile>& file) {
  Post([this, file] {
    static_cast<void>(Store(file));
    LetGo(file);
  });
}

// Its store may wait for others, and the process may be killed before.
void Writing::NoteWhole(LocalFile& file) {
  const bool hasOtherWriters = file.writers() > 1;
  if (hasOtherWriters || file.isListedWhole() || file.isReplaced() || file.failedWrite() != 0) return;
  if (fsync(file.file().descriptor()) != 0) return file.NoteFailedWrite(errno);
  waiting_.Note(file, Written::Whole, unconfirmedStore);
}

std::shared_ptr<LocalFile> Writing::EditKnown(const std::string& address) {
  auto known = overlay_.FindToWrite(address);
  if (known == nullptr || known->isScratch() || (known->isDirty() && !known->isCreated())) return known;
  LetGo(known);
  return nullptr;
}

// Those who write to one checkout of a document write to one file. What the mount has made a document of is written to
// by the programs that have it open; others need a checkout as for any document.
Writable Writing::Edit(const std::string& address, bool keepsContent) {
  if (auto known = EditKnown(address)) return {0, std::move(known)};
  const auto required = checkouts_.Require(address);
  if (required.error != 0) return {required.error};
  if (auto known = overlay_.FindToWrite(address)) {
    if (known->isDirty() || known->isCreated() || known->base() == required.base)
      return {0, std::move(known)};
    // It was opened for an earlier checkout. What is written to it from now on waits.
    LetGo(known);
    overlay_.Take(address, known);
  }
  const Writable made = keepsContent ? files_.MakeOf(ReadBy(required.uid)) : files_.MakeEmpty();
  if (made.file == nullptr) return made;
  made.file->SetBase(required.base);
  return {0, overlay_.LayToWrite(address, made.file)};
}

int Writing::NoteChange(LocalFile& file, Due due) {
  const auto lock = file.LockEntry();
  file.SetChanged(std::time(nullptr));
  // One that waits is half while it is written to again.
  if (!file.isReplaced() && (!file.isDirty() || file.isListedWhole()) && !file.isScratch()) {
    if (const int error = waiting_.Note(file, Written::MaybeHalf, "it was not closed"); error != 0)
      return error;
    waiting_.unstored().KeepAfterAll(file.name());
    file.KeepContent();
  }
  file.NoteChange(due);
  return 0;
}

std::string Writing::BaseNow(const std::string& address) {
  const auto required = checkouts_.Require(address);
  return required.error == ENOENT ? vtdirect_cli::baseOfNewDocument : required.base;
}

int Writing::Empty(const std::shared_ptr<LocalFile>& file, const std::string& base) {
  if (const int error = NoteChange(*file, Due::AfterNextChange); error != 0) return error;
  if (ftruncate(file->file().descriptor(), 0) != 0) return errno;
  file->NoteFailedWrite(0);
  if (!base.empty()) file->SetBase(base);
  return 0;
}

void Writing::BeginRetry() {
  Post([this] {
    RetryOnce();
    retries_.NoteEnd();
  });
}

void Writing::RetryOnce() {
  for (const std::string& address : waiting_.Addresses()) {
    const auto file = overlay_.Find(address);
    if (file != nullptr && file->hasWriters()) continue;
    if (file != nullptr && waiting_.unstored().IsToBeDropped(file->name())) {
      waiting_.Drop(address, file);
      continue;
    }
    if (file == nullptr || !file->isDirty() || Store(file) == 0) waiting_.Remove(address);
    // Who closed it while it was stored has left it to this.
    if (file != nullptr && !file->hasWriters() && file->isToBeStored()) StoreLeft(file);
  }
}

}  // namespace vtdirect_mount
