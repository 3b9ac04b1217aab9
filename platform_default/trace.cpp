#include "platform/trace.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string_view>
#include <utility>

#include "platform/environment.h"

namespace dp {
namespace {

struct HandlerSlot {
  std::mutex mutex;
  std::shared_ptr<const TraceHandler> handler;
};

HandlerSlot& Slot() {
  // Never destroyed: whatever a host keeps in static objects may still trace while the process ends.
  static HandlerSlot& slot = *new HandlerSlot;
  return slot;
}

std::shared_ptr<const TraceHandler> CurrentHandler() {
  const std::lock_guard lock(Slot().mutex);
  return Slot().handler;
}

bool DefaultWrites(TraceType type) {
  const std::string types = Environment::Get("FENLOOM_TRACE");
  return types.find(static_cast<char>('0' + static_cast<int>(type))) != std::string::npos;
}

/// How many bytes at the start of a text steer a terminal: a control of ASCII, or in UTF-8 one of the controls above
/// it or a character that turns the direction of writing. 0 for anything else.
std::size_t SteeringBytes(std::string_view text) {
  const auto at = [text](std::size_t index) {
    return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
  };
  if (at(0) < 0x20) return text[0] == '\n' || text[0] == '\t' ? 0 : 1;
  if (at(0) == 0x7F) return 1;
  if (at(0) == 0xC2 && at(1) >= 0x80 && at(1) <= 0x9F) return 2;
  if (at(0) == 0xE2 && at(1) == 0x80 && at(2) >= 0xAA && at(2) <= 0xAE) return 3;
  return at(0) == 0xE2 && at(1) == 0x81 && at(2) >= 0xA6 && at(2) <= 0xA9 ? 3 : 0;
}

/// One line for a terminal or a log. Texts quote what servers answered, so what could steer a terminal is shown as
/// "?".
void WriteToStandardError(const char* area, const char* name, TraceType type, const std::string& text) {
  std::string line = std::to_string(static_cast<int>(type)) + " " + area + "/" + name + ": ";
  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t steering = SteeringBytes(rest);
    line += steering > 0 ? '?' : rest.front();
    rest.remove_prefix(std::max<std::size_t>(steering, 1));
  }
  if (line.back() != '\n') line += '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void Write(const char* area, const char* name, TraceType type, const std::string& text) {
  // The handler is called on a share of its own and without the lock, so that it may trace or replace itself.
  const std::shared_ptr<const TraceHandler> handler = CurrentHandler();
  if (handler == nullptr) {
    if (DefaultWrites(type)) WriteToStandardError(area, name, type, text);
    return;
  }
  try {
    (*handler)(area, name, type, text);
  } catch (...) {
    // A handler's own trouble must not change how the traced operation ends.
  }
}

std::string Compose(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  if (length < 0) return format;
  std::string text(static_cast<std::size_t>(length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  return text;
}

const char* OrEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

}  // namespace

void SetTraceHandler(TraceHandler handler) {
  std::shared_ptr<const TraceHandler> fresh;
  if (handler) fresh = std::make_shared<const TraceHandler>(std::move(handler));
  {
    const std::lock_guard lock(Slot().mutex);
    Slot().handler.swap(fresh);
  }
  // The handler that was replaced goes here, outside the lock: its destructor is the host's code.
}

TraceFormatter::TraceFormatter(const char* area, const char* name, TraceType type, bool enabled)
    : area_(area),
      name_(name),
      type_(type),
      text_(enabled ? std::make_unique<std::ostringstream>() : nullptr) {}

TraceFormatter::TraceFormatter(TraceFormatter&&) noexcept = default;

TraceFormatter::~TraceFormatter() {
  if (text_) Write(area_, name_, type_, text_->str());
}

LXTracer::LXTracer(const char* area, const char* name) : area_(OrEmpty(area)), name_(OrEmpty(name)) {}

void LXTracer::operator()(TraceType type, const char* format, ...) const {
  if (format == nullptr || (CurrentHandler() == nullptr && !DefaultWrites(type))) return;
  va_list arguments;
  va_start(arguments, format);
  const std::string text = Compose(format, arguments);
  va_end(arguments);
  Write(area_, name_, type, text);
}

TraceFormatter LXTracer::operator()(TraceType type) const {
  return TraceFormatter(area_, name_, type, CurrentHandler() != nullptr || DefaultWrites(type));
}

}  // namespace dp
