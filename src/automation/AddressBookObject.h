// The AddressBook that clients hold. When the Server that it is given lives in another process of
// this program, that process has an address book made, and this object passes all calls on to it.
#pragma once

#include "addressbook/AddressBook.h"
#include "automation/PublicObject.h"
#include "quillon_h.h"

namespace quillon {

class AddressBookObject final : public PublicObject<IAddressBook, AddressBook> {
 public:
  // `items` describes the collections that it hands out.
  AddressBookObject(const ClassType& type, const DualInterface& items, ProcessLifetime& lifetime)
      : PublicObject(type, lifetime), items_(items) {}

  // What a put of MailObject does; throws.
  void WorkOn(IDispatch* mailObject);

  HRESULT STDMETHODCALLTYPE get_MailObject(IDispatch** value) override;
  HRESULT STDMETHODCALLTYPE put_MailObject(IDispatch* newValue) override;
  HRESULT STDMETHODCALLTYPE putref_MailObject(IDispatch* newValue) override;
  HRESULT STDMETHODCALLTYPE OpenAddressBook(VARIANT bookName) override;
  HRESULT STDMETHODCALLTYPE CloseAddressBook() override;
  HRESULT STDMETHODCALLTYPE MoveFirst() override;
  HRESULT STDMETHODCALLTYPE MoveNext() override;
  HRESULT STDMETHODCALLTYPE MoveLast() override;
  HRESULT STDMETHODCALLTYPE MovePrevious() override;
  HRESULT STDMETHODCALLTYPE get_Name(BSTR* value) override;
  HRESULT STDMETHODCALLTYPE get_Address(BSTR* value) override;
  HRESULT STDMETHODCALLTYPE GetAddressBookItems(short itemType, SAFEARRAY** itemArray,
                                                short* itemCount) override;
  HRESULT STDMETHODCALLTYPE get_sessionHandle(VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE get_BookNames(IDispatch** value) override;
  HRESULT STDMETHODCALLTYPE get_Count(LONG* value) override;
  HRESULT STDMETHODCALLTYPE get_BOF(short* value) override;
  HRESULT STDMETHODCALLTYPE get_EOF(short* value) override;
  HRESULT STDMETHODCALLTYPE get_EntryType(short* value) override;
  HRESULT STDMETHODCALLTYPE Find(BSTR beginning, short* value) override;
  HRESULT STDMETHODCALLTYPE ShowAddressBook() override;

 private:
  // Runs a member of this object, or that of the one that works in the Server's own process.
  template <class Member, class Here, class... Arguments>
  HRESULT Route(Member member, Here here, Arguments... arguments);

  const DualInterface& items_;
  ComPtr<IDispatch> mailObject_;    // as the client put it
  ComPtr<IAddressBook> elsewhere_;  // that of a Server of another process
};

}  // namespace quillon
