#include "simulator/wire/answer_cache.h"

#include <memory>
#include <utility>

namespace vantry_sim {
namespace {

constexpr std::size_t mostBytes = 64 * 1024 * 1024;

/// Everything that an answer may depend on, but for the state. No part of it holds a line feed.
std::string KeyOf(const Request& request) {
  return request.user + "\n" + request.host + "\n" + request.prefer + "\n" + request.target;
}

std::size_t SizeOf(const std::string& key, const Response& response) {
  return key.size() + sizeof response + response.body.size() +
         (response.shared ? response.shared->size() : 0);
}

}  // namespace

std::optional<Response> AnswerCache::Find(const Request& request, const DatabaseVersion& version) {
  if (!(version == version_)) {
    Clear();
    version_ = version;
    return std::nullopt;
  }
  const auto found = answers_.find(KeyOf(request));
  return found == answers_.end() ? std::nullopt : std::optional(found->second);
}

void AnswerCache::Keep(const Request& request, Response& response) {
  if (response.status != 200 || response.once) return;
  if (response.body.size() > shortBody && !Share(request, response)) {
    response = ErrorResponse(503, "no-room",
                             "the long answers that are read now are as much as this server holds together");
    return;
  }
  std::string key = KeyOf(request);
  const std::size_t size = SizeOf(key, response);
  if (size > mostBytes / 2) return;
  if (size_ + size > mostBytes) Clear();
  size_ += size;
  answers_.insert_or_assign(std::move(key), response);
}

/// Answers that nobody reads any longer make room. @return false where that is not enough
bool AnswerCache::Share(const Request& request, Response& response) {
  response.shared = memory_.Hold(response.body, request.client);
  if (response.shared) return true;
  Clear();
  response.shared = memory_.Hold(response.body, request.client);
  return response.shared != nullptr;
}

void AnswerCache::Clear() {
  answers_.clear();
  size_ = 0;
}

}  // namespace vantry_sim
