#pragma once

#include <optional>
#include <string>

#include "hosts/cli/program/host.h"

namespace vtdirect_cli {

/// What a GET of the program's own has shown.
struct DirectAnswer {
  int status = 0;     ///< 0 without an answer
  std::string body;   ///< its start; empty if only the head was asked for
  std::string fault;  ///< what the exchange failed on, as a sentence; empty with an answer
  bool headOnly = false;
};

/// What is wanted of an answer; with the head alone the exchange ends when that is there.
enum class AnswerPart { Whole, HeadAlone };

/// Asks for a URL, past the library, with the login of the server: for what no call of the library asks for by
/// itself, and for the head of a content. Changes nothing on a server. Makes a request.
[[nodiscard]] DirectAnswer AskDirectly(Host& host, const std::string& url, AnswerPart wanted);

/// The URL of a resource below that of a server: "https://plm.example/vt" and "servlet/OrvetGW".
[[nodiscard]] std::string UrlBelow(const std::string& server, const std::string& resource);

}  // namespace vtdirect_cli
