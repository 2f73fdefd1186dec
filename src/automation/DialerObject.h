// The Dialer that clients hold.
#pragma once

#include "automation/PublicObject.h"
#include "dialer/Dialer.h"
#include "quillon_h.h"

namespace quillon {

class DialerObject final : public PublicObject<IDialer, Dialer> {
 public:
  using PublicObject::PublicObject;

#define TEXT_PROPERTY(name, field)                             \
  HRESULT STDMETHODCALLTYPE get_##name(BSTR* value) override { \
    return Answer(value, &Dialer::Get, Dialer::Field::field);  \
  }                                                            \
  HRESULT STDMETHODCALLTYPE put_##name(BSTR text) override {   \
    return Run(&Dialer::Put, Dialer::Field::field, text);      \
  }
  TEXT_PROPERTY(Domain, Domain)
  TEXT_PROPERTY(Password, Password)
  TEXT_PROPERTY(username, UserName)
  TEXT_PROPERTY(PhoneNumber, PhoneNumber)
  TEXT_PROPERTY(EntryName, EntryName)
#undef TEXT_PROPERTY

  HRESULT STDMETHODCALLTYPE Dial() override {
    return Run(&Dialer::Dial);
  }
  HRESULT STDMETHODCALLTYPE HangUp() override {
    return Run(&Dialer::HangUp);
  }
  HRESULT STDMETHODCALLTYPE get_ActiveEntryName(BSTR* value) override {
    return Answer(value, &Dialer::ActiveEntryName);
  }
  HRESULT STDMETHODCALLTYPE get_OSType(short* value) override {
    return Answer(value, &Dialer::OSType);
  }
  HRESULT STDMETHODCALLTYPE get_WindowsVersion(BSTR* value) override {
    return Answer(value, &Dialer::WindowsVersion);
  }
  HRESULT STDMETHODCALLTYPE get_DialerAvailable(short* value) override {
    return Answer(value, &Dialer::DialerAvailable);
  }
};

}  // namespace quillon
