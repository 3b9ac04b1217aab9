#pragma once

#include <curl/curl.h>

#include <string>

#include "platform/failure_detail.h"
#include "platform/http.h"
#include "platform_default/answer_notes.h"
#include "platform_default/certificate_store.h"
#include "platform_default/origin.h"
#include "platform_default/tls_events.h"
#include "platform_default/transfer_clock.h"

/// From what an exchange left behind to the sentence that says what it failed on. Pure functions.
namespace vtdirect::platform {

/// What an exchange left behind.
struct ExchangeEvidence {
  Origin origin;                                         ///< where it went
  du::http::ErrorCode code = du::http::ErrorCode::Done;  ///< how it ended
  int status = 0;                                        ///< of its last status line, 0 without one
  bool isUnclear = false;                                ///< its answer was refused for its length or coding
  bool isCodedContent = false;                           ///< its answer was refused for being coded
  AnswerNotes notes;
  long offeredLogins = 0;  ///< those of curl's CURLAUTH_ bits that the answer offers

  bool limitRanOut = false;  ///< a limit on waiting ended it, once it was connected
  TransferClock::Wait wait;
  long connectLimitMilliseconds = 0;

  CURLcode result = CURLE_OK;
  std::string curlText;         ///< curl's own words, which name hosts and what OpenSSL said
  long systemError = 0;         ///< errno of connecting
  bool hasAddress = false;      ///< the name was resolved
  bool hasConnected = false;    ///< there was a TCP connection, to the server or to a proxy
  int tunnelStatus = 0;         ///< what a proxy answered that was asked for a tunnel; 0 without one
  bool waitsForTunnel = false;  ///< a proxy was asked for one when it ended

  TlsEvents tls;
  int verification = 0;  ///< X509_V_ERR_..., by curl; 0 and 1 tell nothing
  TrustFault trustFault = TrustFault::None;
  std::string trustFile;
};

/// What the exchange failed on; Unknown without a text when the evidence tells no more than its code. Of a
/// delivered answer, what it shows of something between here and the server.
[[nodiscard]] du::http::FailureReport ExplainFailure(const ExchangeEvidence& evidence);

/// The part of ExplainFailure for a TLS handshake that failed.
[[nodiscard]] du::http::FailureReport ExplainTls(const ExchangeEvidence& evidence);

}  // namespace vtdirect::platform
