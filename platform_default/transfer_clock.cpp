#include "platform_default/transfer_clock.h"

namespace vtdirect::platform {

void TransferClock::Reset(const TimeLimits& limits) {
  *this = {};
  limits_ = limits;
}

void TransferClock::RequestStarts(Time now) {
  running_ = true;
  bodyBegun_ = false;
  bodyOut_ = false;
  answering_ = false;
  lastMove_ = now;
}

void TransferClock::AnswerArrives(Time now) {
  answering_ = true;
  lastMove_ = now;
}

long TransferClock::LimitOfThisStage() const {
  if (answering_) return limits_.stall;
  if (bodyOut_) return limits_.firstByteAfterBody;
  return bodyBegun_ ? limits_.stall : limits_.firstByte;
}

TransferClock::Wait TransferClock::CurrentWait() const {
  const bool sends = bodyBegun_ && !bodyOut_;
  return {answering_ ? Stage::Answer : (sends ? Stage::Body : Stage::FirstByte), LimitOfThisStage()};
}

bool TransferClock::HasRunOut(Time now, std::int64_t received, std::int64_t sent) {
  if (!running_) return false;
  if (received != received_ || sent != sent_) {
    received_ = received;
    sent_ = sent;
    lastMove_ = now;
    return false;
  }
  // In whole seconds: a host may set any number of them, and many are more than nanoseconds can count.
  return std::chrono::duration_cast<std::chrono::seconds>(now - lastMove_).count() >= LimitOfThisStage();
}

}  // namespace vtdirect::platform
