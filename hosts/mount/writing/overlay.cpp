#include "hosts/mount/writing/overlay.h"

#include <utility>

namespace vtdirect_mount {

std::shared_ptr<LocalFile> Overlay::Find(const std::string& address) const {
  const std::lock_guard lock(mutex_);
  const auto place = files_.find(address);
  return place == files_.end() ? nullptr : place->second;
}

std::shared_ptr<LocalFile> Overlay::Lay(const std::string& address, std::shared_ptr<LocalFile> file) {
  file->SetAddress(address);
  const std::lock_guard lock(mutex_);
  files_[address].swap(file);
  aside_.erase(address);
  return file;
}

std::shared_ptr<LocalFile> Overlay::FindToWrite(const std::string& address) const {
  const std::lock_guard lock(mutex_);
  const auto place = files_.find(address);
  if (place == files_.end()) return nullptr;
  place->second->NoteWriter();
  return place->second;
}

std::shared_ptr<LocalFile> Overlay::LayToWrite(const std::string& address,
                                               const std::shared_ptr<LocalFile>& file) {
  file->SetAddress(address);
  const std::lock_guard lock(mutex_);
  aside_.erase(address);
  auto laid = files_.emplace(address, file).first->second;
  laid->NoteWriter();
  return laid;
}

void Overlay::Take(const std::string& address, const std::shared_ptr<LocalFile>& file) {
  const std::lock_guard lock(mutex_);
  const auto place = files_.find(address);
  if (place != files_.end() && place->second == file) files_.erase(place);
}

void Overlay::TakeIfIdle(const std::string& address, const std::shared_ptr<LocalFile>& file) {
  const std::lock_guard lock(mutex_);
  const auto place = files_.find(address);
  const bool isIdle = !file->hasWriters() && !file->isDirty() && !file->isScratch();
  if (isIdle && place != files_.end() && place->second == file) files_.erase(place);
}

void Overlay::PutAside(const std::string& address, const std::string& base, Clock::time_point now) {
  const std::lock_guard lock(mutex_);
  aside_[address] = {now, base};
}

std::string Overlay::BaseOfAside(const std::string& address) const {
  const std::lock_guard lock(mutex_);
  const auto place = aside_.find(address);
  return place == aside_.end() ? "" : place->second.base;
}

bool Overlay::IsAside(const std::string& address, Clock::time_point now) const {
  const std::lock_guard lock(mutex_);
  const auto place = aside_.find(address);
  return place != aside_.end() && now - place->second.since < asideSeconds;
}

void Overlay::BringBack() {
  const std::lock_guard lock(mutex_);
  aside_.clear();
}

std::vector<std::string> Overlay::NamesIn(const std::string& folder) const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> names;
  for (auto place = files_.lower_bound(folder); place != files_.end() && place->first.starts_with(folder);
       ++place) {
    const std::string name = place->first.substr(folder.size());
    if (name.find('/') == std::string::npos) names.push_back(name);
  }
  return names;
}

}  // namespace vtdirect_mount
