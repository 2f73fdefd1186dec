#include "mail/AsynchNotifier.h"

#include <exception>
#include <utility>

#include "core/ErrorCode.h"
#include "core/ServerError.h"

namespace quillon {

void AsynchNotifier::Register(std::shared_ptr<NotificationObject> object,
                              Configuration configuration) {
  object_ = std::move(object);
  configuration_ = configuration;
}

void AsynchNotifier::Unregister() {
  if (InCallback()) throw ServerError(error_code::kInNotification);
  if (inProgress_) throw ServerError(error_code::kInProgress);
  object_.reset();
}

void AsynchNotifier::Reset() {
  object_.reset();
  configuration_ = Configuration::All;
  tagMode_ = false;
}

void AsynchNotifier::StartAnew() {
  Reset();
  inProgress_ = false;
  record_ = {};
}

void AsynchNotifier::Post(const AsynchEvent& event) {
  const bool ends = event.kind == asynch_kind::kEndOfProcess;
  if (ends) inProgress_ = false;
  if (object_ == nullptr) return;
  record_ = event;
  if (event.kind == asynch_kind::kRecordOnly) return;
  if (configuration_ == Configuration::EndsOnly && !ends) return;
  auto delivered = event;
  if (tagMode_) delivered.text += " Tag: " + event.tag;
  const auto object = object_;  // stays alive while it is called
  bool reached = true;
  ++callbacks_;
  try {
    reached = object->AsynchNotification(delivered);
  } catch (const std::exception&) {
    // The event is lost; the operation goes on.
  }
  --callbacks_;
  if (!reached && object_ == object) object_.reset();
}

}  // namespace quillon
