#include "platform_default/origin_session.h"

namespace vtdirect::platform {
namespace {

constexpr std::chrono::seconds timeWrittenOff{5};

}  // namespace

void OriginSession::WriteOff(Time now, long connectLimit) {
  const std::lock_guard lock(mutex_);
  writtenOff_ = WrittenOff{now, connectLimit};
  mayBeWrittenOff_ = true;
}

void OriginSession::ForgetWriteOff() {
  if (!mayBeWrittenOff_) return;
  const std::lock_guard lock(mutex_);
  writtenOff_.reset();
  mayBeWrittenOff_ = false;
}

bool OriginSession::IsWrittenOff(Time now, long connectLimit) const {
  if (!mayBeWrittenOff_) return false;
  const std::lock_guard lock(mutex_);
  return writtenOff_ && writtenOff_->connectLimit == connectLimit &&
         now - writtenOff_->since < timeWrittenOff;
}

}  // namespace vtdirect::platform
