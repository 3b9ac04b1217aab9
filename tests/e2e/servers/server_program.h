#pragma once

#include <map>
#include <string>
#include <vector>

namespace vtdirect_test {

/// The path of a program, looked for in PATH and where Debian keeps servers; empty when it is missing.
[[nodiscard]] std::string FindProgram(const std::string& name);

/// A configuration whose "@NAME@" are replaced by the values of these names.
[[nodiscard]] std::string Filled(std::string text, const std::map<std::string, std::string>& values);

/// Runs a program to its end, its output into a file.
/// @param input  what it reads on standard input
/// @return its exit status; -1 when it did not end by itself
int RunProgram(const std::vector<std::string>& words, const std::string& logFile,
               const std::string& input = "");

/// The lines of a server's log. A request is noted after it was answered, so this waits until `count` of them
/// are there, ten seconds at most.
std::vector<std::string> LinesOf(const std::string& logFile, std::size_t count);

/// A server of somebody else's that serves one test: started in the foreground with this process's
/// environment, in a session of its own, and stopped with all its children at the end, also when the test is
/// killed.
class ServerProgram {
 public:
  /// Waits until it accepts connections.
  /// @param port     of 127.0.0.1
  /// @param logFile  gets what it writes; it is part of the exception when the server doesn't start
  ServerProgram(const std::vector<std::string>& words, int port, const std::string& logFile);
  ~ServerProgram();
  ServerProgram(const ServerProgram&) = delete;
  ServerProgram& operator=(const ServerProgram&) = delete;

 private:
  int process_;
};

}  // namespace vtdirect_test
