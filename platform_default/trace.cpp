#include "platform/trace.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
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

/// One line for a terminal or a log. Texts quote what servers answered, so control bytes that could steer a
/// terminal are shown as "?".
void WriteToStandardError(const char* area, const char* name, TraceType type, const std::string& text) {
  std::string line = std::to_string(static_cast<int>(type)) + " " + area + "/" + name + ": ";
  for (const char byte : text) {
    const auto value = static_cast<unsigned char>(byte);
    const bool control = (value < 0x20 && byte != '\n' && byte != '\t') || value == 0x7F;
    line += control ? '?' : byte;
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
