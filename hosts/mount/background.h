#pragma once

namespace vtdirect_mount {

/// A program that returns to the shell when it has something to show, and goes on without a terminal.
class Background {
 public:
  /// Splits the process. The one that the shell waits for ends in here, with the status that the other one
  /// tells, or with 1 when that one is gone. To be called before there is a second thread.
  Background();
  ~Background();
  Background(const Background&) = delete;
  Background& operator=(const Background&) = delete;

  /// Lets the shell go on, and leaves its terminal.
  void LetGo();
  /// Ends the one that the shell waits for with this status.
  void Tell(int status);

 private:
  int pipe_ = -1;
};

}  // namespace vtdirect_mount
