// What the objects of the tree have in common: the session they belong to, and the four members
// that each of them has.
#pragma once

#include "desk/win32/DispatchObject.h"
#include "olemsg32/Errors.h"

namespace desk {

class Session;

class Object : public DispatchObject {
 public:
  Session& Owner() const noexcept { return *session_; }

 protected:
  // `parent` may be null for the session, which owns itself.
  Object(Session* session, Object* parent)
      : session_(session),
        sessionReference_(parent == nullptr ? nullptr : AsDispatch(session)),
        parent_(parent) {}

  virtual long ClassNumber() const = 0;
  const FaceFacts& Face() const override;
  std::span<const MemberFacts> CommonMembers() const override;
  Variant ReadCommon(std::size_t index) const override;

 private:
  static IDispatch* AsDispatch(Session* session);

  Session* session_;
  ComPtr<IDispatch> sessionReference_;  // none for the session itself
  ComPtr<IDispatch> parent_;
};

// T has `kNumber` besides what a TableObject has.
template <class T>
class ObjectOf : public TableObject<T, Object> {
 protected:
  using TableObject<T, Object>::TableObject;

  long ClassNumber() const override { return T::kNumber; }
};

}  // namespace desk
