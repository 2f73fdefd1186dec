#include "automation/AddressBookObject.h"

#include <utility>

#include "automation/ItemsObject.h"
#include "automation/ServerObject.h"
#include "server/ErrorTable.h"

namespace quillon {
namespace {

bool IsLeftOut(const VARIANT& argument) {
  return V_VT(&argument) == VT_ERROR && V_ERROR(&argument) == DISP_E_PARAMNOTFOUND;
}

}  // namespace

HRESULT STDMETHODCALLTYPE AddressBookObject::get_MailObject(IDispatch** value) {
  return Call([&] { Output(value) = ComPtr<IDispatch>(mailObject_).Detach(); });
}

HRESULT STDMETHODCALLTYPE AddressBookObject::put_MailObject(IDispatch* newValue) {
  return Call([&] {
    auto server = ServerObject::Behind(newValue);
    if (newValue != nullptr && server == nullptr) {
      throw ServerError(error_code::kInvalidValue, ErrorText(error_code::kInvalidValue));
    }
    const auto before = std::exchange(mailObject_, ComPtr<IDispatch>(newValue));
    Below().SetMailObject(std::move(server));
  });
}

HRESULT STDMETHODCALLTYPE AddressBookObject::putref_MailObject(IDispatch* newValue) {
  return put_MailObject(newValue);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::OpenAddressBook(VARIANT bookName) {
  return Call([&] {
    const bool named = !IsLeftOut(bookName);
    Below().OpenAddressBook(named ? ToText(Taken(bookName)) : std::string());
  });
}

HRESULT STDMETHODCALLTYPE AddressBookObject::CloseAddressBook() {
  return Run(&AddressBook::CloseAddressBook);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::MoveFirst() {
  return Run(&AddressBook::MoveFirst);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::MoveNext() {
  return Run(&AddressBook::MoveNext);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::MoveLast() {
  return Run(&AddressBook::MoveLast);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::MovePrevious() {
  return Run(&AddressBook::MovePrevious);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::get_Name(BSTR* value) {
  return Answer(value, &AddressBook::Name);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::get_Address(BSTR* value) {
  return Answer(value, &AddressBook::Address);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::GetAddressBookItems(short itemType,
                                                                 SAFEARRAY** itemArray,
                                                                 short* itemCount) {
  return Call([&] { GiveList(Below().GetAddressBookItems(itemType), itemArray, itemCount); });
}

HRESULT STDMETHODCALLTYPE AddressBookObject::get_sessionHandle(VARIANT* value) {
  return Answer(value, &AddressBook::SessionHandle);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::get_BookNames(IDispatch** value) {
  return Call([&] {
    Output(value) = nullptr;
    *value = new ItemsObject(items_, Lifetime(), Below().BookNames());
  });
}

HRESULT STDMETHODCALLTYPE AddressBookObject::get_Count(LONG* value) {
  return Answer(value, &AddressBook::Count);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::get_BOF(short* value) {
  return Answer(value, &AddressBook::BeginMark);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::get_EOF(short* value) {
  return Answer(value, &AddressBook::EndMark);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::get_EntryType(short* value) {
  return Answer(value, &AddressBook::EntryType);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::Find(BSTR beginning, short* value) {
  return Answer(value, &AddressBook::Find, beginning);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::ShowAddressBook() {
  return Run(&AddressBook::ShowAddressBook);
}

}  // namespace quillon
