#pragma once

#include <chrono>
#include <cstdint>

namespace vtdirect::platform {

/// How long an exchange may wait at each stage, in whole seconds.
struct TimeLimits {
  long stall = 0;               ///< no byte of the body goes out, or none of the answer comes in
  long firstByte = 0;           ///< the request is out and had no body
  long firstByteAfterBody = 0;  ///< the request is out, and so is its body
};

/// Tells when an exchange has waited too long. It is fed with what happens and asked now and then; it reads
/// no clock of its own.
///
/// A server may think for minutes before it answers, above all after an upload. A line that stops in the
/// middle of a body is broken after a much shorter time. So the limit depends on what is being waited for.
/// The time to connect is not measured here.
class TransferClock {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// What is being waited for: that the body goes out, that an answer begins, that it goes on.
  enum class Stage { Body, FirstByte, Answer };
  struct Wait {
    Stage stage = Stage::FirstByte;
    long seconds = 0;  ///< the limit of this stage
  };

  /// Forgets the exchange before. Nothing runs out until a request starts.
  void Reset(const TimeLimits& limits);

  /// The connection is there and a request goes out on it. One exchange may send several, one after the
  /// other.
  void RequestStarts(Time now);
  /// The first bytes of the body have been taken from their source.
  void BodyBegins() { bodyBegun_ = true; }
  /// The last byte of the body has been handed to the system.
  void BodyIsOut() { bodyOut_ = true; }
  /// A line of an answer's header has come.
  void AnswerArrives(Time now);
  /// That header belonged to an interim answer (1xx): the server is at work, and the wait begins again.
  void AnswerWasInterim() { answering_ = false; }

  /// True when no byte has moved for as long as the stage allows.
  /// @param received, sent  bytes of both bodies so far
  [[nodiscard]] bool HasRunOut(Time now, std::int64_t received, std::int64_t sent);

  /// What was waited for last.
  [[nodiscard]] Wait CurrentWait() const;

 private:
  [[nodiscard]] long LimitOfThisStage() const;

  TimeLimits limits_;
  bool running_ = false;
  bool bodyBegun_ = false;
  bool bodyOut_ = false;
  bool answering_ = false;
  Time lastMove_;
  std::int64_t received_ = 0;
  std::int64_t sent_ = 0;
};

}  // namespace vtdirect::platform
