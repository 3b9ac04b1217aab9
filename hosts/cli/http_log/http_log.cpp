#include "hosts/cli/http_log/http_log.h"

#include <mutex>
#include <utility>

namespace vtdirect_cli {
namespace {

constexpr std::size_t bodyBytes = std::size_t{64} << 10U;
constexpr std::size_t mostBytes = std::size_t{64} << 20U;
constexpr std::size_t mostExchanges = 50'000;

[[nodiscard]] std::size_t SizeOf(const du::http::ObservedExchange& exchange) {
  std::size_t size = exchange.url.size() + exchange.requestBody.size() + exchange.answerBody.size();
  for (const auto& turn : exchange.turns) size += turn.requestHead.size() + turn.answerHead.size();
  return size;
}

}  // namespace

struct HttpLog::State {
  std::mutex mutex;
  SeenExchanges seen;
  std::size_t bytes = 0;
};

HttpLog::HttpLog(du::http::ExchangeObserver also)
    : also_(std::move(also)), state_(std::make_shared<State>()) {
  const auto observe = [state = state_, told = also_](const du::http::ObservedExchange& exchange) {
    told(exchange);
    const std::lock_guard lock(state->mutex);
    const std::size_t size = SizeOf(exchange);
    if (state->bytes + size > mostBytes || state->seen.exchanges.size() >= mostExchanges) {
      ++state->seen.leftOut;
      return;
    }
    state->bytes += size;
    state->seen.exchanges.push_back(exchange);
  };
  du::http::SetExchangeObserver(observe, bodyBytes);
}

HttpLog::~HttpLog() {
  du::http::SetExchangeObserver(also_, 0);
}

SeenExchanges HttpLog::Seen() const {
  const std::lock_guard lock(state_->mutex);
  return state_->seen;
}

}  // namespace vtdirect_cli
