#include "connection/server_knowledge.h"

namespace lxservices::cms_interface::vantry {

void MergeServices(ServiceFlags& known, const ServiceFlags& learned) {
  if (!known.dataAdminChecked) {
    known.dataAdminPresent = learned.dataAdminPresent;
    known.folderContents = learned.folderContents;
    known.dataAdminV5 = learned.dataAdminV5;
    known.dataAdminChecked = learned.dataAdminChecked;
  }
  if (!known.dynamicDocChecked) {
    known.dynamicDocPresent = learned.dynamicDocPresent;
    known.dynamicDocV2 = learned.dynamicDocV2;
    known.dynamicDocChecked = learned.dynamicDocChecked;
  }
  if (!known.cadDocChecked) {
    known.cadDocPresent = learned.cadDocPresent;
    known.cadDocChecked = learned.cadDocChecked;
  }
}

void MergeFeatures(std::optional<ServerFeatures>& known, const ServerFeatures& learned) {
  const ServerFeatures before = known.value_or(ServerFeatures());
  known = {before.separatedSources || learned.separatedSources, before.vcsInfo || learned.vcsInfo};
}

void MergeAnswer(std::optional<bool>& known, bool learned) {
  known = known.value_or(false) || learned;
}

std::string ServerKnowledge::NonceLine() const {
  const std::lock_guard lock(mutex_);
  return nonceLine_;
}

std::string ServerKnowledge::LearnNonceLine(const std::string& line) {
  const std::lock_guard lock(mutex_);
  if (!line.empty()) nonceLine_ = line;
  return nonceLine_;
}

std::string ServerKnowledge::AuthAppVersion() const {
  const std::lock_guard lock(mutex_);
  return authAppVersion_;
}

void ServerKnowledge::LearnAuthAppVersion(const std::string& version) {
  const std::lock_guard lock(mutex_);
  authAppVersion_ = version;
}

ServiceFlags ServerKnowledge::Services() const {
  const std::lock_guard lock(mutex_);
  return services_;
}

ServiceFlags ServerKnowledge::LearnServices(const ServiceFlags& learned) {
  const std::lock_guard lock(mutex_);
  MergeServices(services_, learned);
  return services_;
}

std::optional<ServerFeatures> ServerKnowledge::Features() const {
  const std::lock_guard lock(mutex_);
  return features_;
}

ServerFeatures ServerKnowledge::LearnFeatures(const ServerFeatures& learned) {
  const std::lock_guard lock(mutex_);
  MergeFeatures(features_, learned);
  return *features_;
}

std::optional<bool> ServerKnowledge::Translates() const {
  const std::lock_guard lock(mutex_);
  return translates_;
}

bool ServerKnowledge::LearnTranslates(bool learned) {
  const std::lock_guard lock(mutex_);
  MergeAnswer(translates_, learned);
  return *translates_;
}

}  // namespace lxservices::cms_interface::vantry
