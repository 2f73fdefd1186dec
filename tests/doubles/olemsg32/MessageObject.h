// One message.
#pragma once

#include <algorithm>

#include "olemsg32/MessageState.h"
#include "olemsg32/Session.h"

namespace desk {

class MessageObject final : public ChildOf<MessageObject> {
 public:
  static constexpr std::string_view kName = "Message";
  static constexpr long kNumber = 3;
  static constexpr std::string_view kDefault = "Subject";
  static std::span<const MemberOf<MessageObject>> Members();

  MessageObject(Object& parent, MessageStatePtr state)
      : ChildOf(parent), state_(std::move(state)) {}

  void CheckUsable() const override;
  const MessageStatePtr& State() const noexcept { return state_; }

 private:
  Variant Id() const;
  Variant Sender();
  Variant Date() const;
  Variant Size() const;
  Variant Update(const Arguments& arguments);
  Variant Send(const Arguments& arguments);
  void AskUser();
  Variant Delete();
  Variant Transfer(const Arguments& arguments, bool copy);
  Variant IsSameAs(const VARIANT& other) const;

  MessageStatePtr state_;
};

// An object of a message's lists: it is of no use without the message.
template <class T>
class MessageChildOf : public ChildOf<T> {
 public:
  void CheckUsable() const override {
    ChildOf<T>::CheckUsable();
    if (state_->gone) throw MemberError(MapiError::kInvalidObject);
  }

 protected:
  MessageChildOf(Object& parent, MessageStatePtr state)
      : ChildOf<T>(parent), state_(std::move(state)) {}

  const MessageStatePtr& State() const noexcept { return state_; }

 private:
  MessageStatePtr state_;
};

// One item of such a list.
template <class T, class Record>
class PartObject : public MessageChildOf<T> {
 public:
  using PartPtr = std::shared_ptr<Part<Record>>;

  void CheckUsable() const override {
    MessageChildOf<T>::CheckUsable();
    if (part_->gone) throw MemberError(MapiError::kInvalidObject);
  }

 protected:
  PartObject(Object& parent, MessageStatePtr state, PartPtr part)
      : MessageChildOf<T>(parent, std::move(state)), part_(std::move(part)) {}

  Record& It() const noexcept { return part_->record; }
  // From 1.
  long IndexIn(const Parts<Record>& parts) const {
    return static_cast<long>(std::find(parts.begin(), parts.end(), part_) - parts.begin()) + 1;
  }
  Variant RemoveFrom(Parts<Record>& parts) {
    part_->gone = true;
    std::erase(parts, part_);
    return {};
  }

 private:
  PartPtr part_;
};

}  // namespace desk
