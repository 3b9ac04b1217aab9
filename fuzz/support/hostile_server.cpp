#include "fuzz/support/hostile_server.h"

#include <string>
#include <utility>

#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"

namespace vtdirect_fuzz {
namespace {

using vtdirect_test::Answer;

std::vector<std::string_view> PartsOf(std::string_view bytes) {
  std::vector<std::string_view> parts;
  while (!bytes.empty()) parts.push_back(TakePart(bytes, answerEnd));
  return parts;
}

std::size_t PlaceIn(const std::string& body, char place) {
  return body.size() * static_cast<unsigned char>(place) / 256;
}

Answer Changed(Answer right, std::string_view change) {
  if (change == "=") return right;
  if (change.size() >= 2 && change[0] == '-') {
    right.body.resize(PlaceIn(right.body, change[1]));
    return right;
  }
  if (change.size() >= 2 && change[0] == '~') {
    right.body.replace(PlaceIn(right.body, change[1]), change.size() - 2, change.substr(2));
    return right;
  }
  return AnswersOf(change).front();
}

}  // namespace

HostileServer::HostileServer(vtdirect_test::Generation generation, std::string_view bytes)
    : good_(generation), changes_(PartsOf(bytes)) {
  transport_.AnswerBy([this](const vtdirect_test::SentRequest& request) { return AnswerTo(request); });
}

void HostileServer::GoAway() {
  const std::lock_guard lock(mutex_);
  next_ = mostAnswers;
}

Answer HostileServer::AnswerTo(const vtdirect_test::SentRequest& request) {
  std::size_t number = 0;
  {
    const std::lock_guard lock(mutex_);
    if (next_ == mostAnswers) return {0, {}, du::http::ErrorCode::NoConnection};
    number = next_++;
  }
  Answer right = good_.AnswerTo(request.line);
  return number < changes_.size() ? Changed(std::move(right), changes_[number]) : right;
}

}  // namespace vtdirect_fuzz
