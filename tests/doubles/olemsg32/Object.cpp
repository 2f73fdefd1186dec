#include "olemsg32/Object.h"

#include <array>

#include "olemsg32/Session.h"

namespace desk {
namespace {

constexpr std::array kCommon{
    MemberFacts{"Application", 20, ""},
    MemberFacts{"Parent", 25, ""},
    MemberFacts{"Session", 34, ""},
    MemberFacts{"Class", 6, ""},
};

constexpr FaceFacts kFace{
    "MAPI.Session", static_cast<HRESULT>(MapiError::kCallFailed),
    [](unsigned long number) { throw MemberError(static_cast<MapiError>(number)); }};

}  // namespace

IDispatch* Object::AsDispatch(Session* session) {
  return session;
}

const FaceFacts& Object::Face() const {
  return kFace;
}

std::span<const MemberFacts> Object::CommonMembers() const {
  return kCommon;
}

Variant Object::ReadCommon(std::size_t index) const {
  const auto given = [](IDispatch* object) { return FromObject(ComPtr<IDispatch>(object)); };
  switch (index) {
    case 0:
      return FromText("Desk");
    case 1:
      return given(parent_.Get());
    case 2:
      return given(sessionReference_ ? sessionReference_.Get() : const_cast<Object*>(this));
    default:
      return FromNumber(ClassNumber());
  }
}

}  // namespace desk
