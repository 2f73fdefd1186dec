// Tells the object that a client has registered what an operation is doing and how it ended. One
// for the process.
//
// With an object registered, the operations that can go on by themselves start and return at once,
// and end with an event of kind kEndOfProcess.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace quillon {

// The operation that an event belongs to (its value 1).
namespace asynch_operation {
inline constexpr std::int32_t kNone = 0;
inline constexpr std::int32_t kSend = 1;
inline constexpr std::int32_t kLoadMessageHeaders = 2;
inline constexpr std::int32_t kLoadMessage = 3;
inline constexpr std::int32_t kDeleteMessage = 4;
inline constexpr std::int32_t kAbort = 5;
inline constexpr std::int32_t kLogin = 6;
inline constexpr std::int32_t kLoadMessageIdentifiers = 7;
}  // namespace asynch_operation

namespace asynch_kind {
inline constexpr std::int32_t kStatus = 1;        // the text says what is being done
inline constexpr std::int32_t kEndOfProcess = 2;  // the result says how it ended
inline constexpr std::int32_t kProgress = 3;      // the counts have changed
inline constexpr std::int32_t kRecordOnly = 256;  // never delivered
}  // namespace asynch_kind

struct AsynchEvent {
  std::int32_t operation = asynch_operation::kNone;
  std::int32_t kind = asynch_kind::kStatus;
  std::int32_t done = 0;     // bytes or messages
  std::int32_t total = 0;    // of them; 0: not known
  std::int32_t message = 0;  // its number in the mailbox
  std::int32_t result = -1;  // -1: success, so far
  std::int32_t reserved = 0;
  std::string text;
  std::string tag;  // where in the program the event comes from
};

// The client's object.
class NotificationObject {
 public:
  virtual ~NotificationObject() = default;
  // Calls its method AsynchNotification. False when there is nobody left to call.
  virtual bool AsynchNotification(const AsynchEvent& event) = 0;
};

class AsynchNotifier {
 public:
  // Every event, or the ends of processes alone.
  enum class Configuration { EndsOnly = 0, All = 1 };

  void Register(std::shared_ptr<NotificationObject> object, Configuration configuration);
  // Throws ServerError 541 inside a call of the object, 540 while a process is in progress.
  void Unregister();
  // Forgets the object, whatever is going on.
  void Reset();
  // As it is when the process starts.
  void StartAnew();

  bool Registered() const noexcept { return object_ != nullptr; }
  bool InCallback() const noexcept { return callbacks_ > 0; }
  bool InProgress() const noexcept { return inProgress_; }
  void SetInProgress() noexcept { inProgress_ = true; }
  void SetTagMode(bool on) noexcept { tagMode_ = on; }

  // Delivers the event before it returns, unless it is not wanted. What the object does wrong costs
  // nobody anything.
  void Post(const AsynchEvent& event);

  // The operation, the counts and the text of the last event.
  const AsynchEvent& ProcessRecord() const noexcept { return record_; }

 private:
  std::shared_ptr<NotificationObject> object_;
  Configuration configuration_ = Configuration::All;
  bool inProgress_ = false;
  bool tagMode_ = false;
  int callbacks_ = 0;  // calls of the object under way, one inside the other
  AsynchEvent record_;
};

}  // namespace quillon
