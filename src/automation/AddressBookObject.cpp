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

// The address book that the Server of another process makes.
ComPtr<IAddressBook> BookBeside(IDispatch* server) {
  const auto provider = QueryFor<IServiceProvider>(server);
  ComPtr<IAddressBook> book;
  if (!provider || FAILED(provider->QueryService(kAddressBookClass.id, __uuidof(IAddressBook),
                                                 book.PutVoid()))) {
    throw ServerError(error_code::kInvalidValue, ErrorText(error_code::kInvalidValue));
  }
  return book;
}

}  // namespace

HRESULT STDMETHODCALLTYPE AddressBookObject::get_MailObject(IDispatch** value) {
  return Call([&] { Output(value) = ComPtr<IDispatch>(mailObject_).Detach(); });
}

void AddressBookObject::WorkOn(IDispatch* mailObject) {
  auto server = ServerObject::Behind(mailObject);
  ComPtr<IAddressBook> elsewhere;
  if (mailObject != nullptr && server == nullptr) elsewhere = BookBeside(mailObject);
  const auto before = std::exchange(mailObject_, ComPtr<IDispatch>(mailObject));
  const auto bookBefore = std::exchange(elsewhere_, elsewhere);
  Below().SetMailObject(std::move(server));
}

HRESULT STDMETHODCALLTYPE AddressBookObject::put_MailObject(IDispatch* newValue) {
  return Call([&] { WorkOn(newValue); });
}

HRESULT STDMETHODCALLTYPE AddressBookObject::putref_MailObject(IDispatch* newValue) {
  return put_MailObject(newValue);
}

template <class Member, class Here, class... Arguments>
HRESULT AddressBookObject::Route(Member member, Here here, Arguments... arguments) {
  if (!elsewhere_) return here();
  const ComPtr<IAddressBook> self(this);  // the client may let go while the other process works
  const ComPtr<IAddressBook> other = elsewhere_;
  return (other.Get()->*member)(arguments...);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::OpenAddressBook(VARIANT bookName) {
  const auto here = [&] {
    return Call([&] {
      const bool named = !IsLeftOut(bookName);
      Below().OpenAddressBook(named ? ToText(Taken(bookName)) : std::string());
    });
  };
  return Route(&IAddressBook::OpenAddressBook, here, bookName);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::GetAddressBookItems(short itemType,
                                                                 SAFEARRAY** itemArray,
                                                                 short* itemCount) {
  const auto here = [&] {
    return Call([&] { GiveList(Below().GetAddressBookItems(itemType), itemArray, itemCount); });
  };
  return Route(&IAddressBook::GetAddressBookItems, here, itemType, itemArray, itemCount);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::get_BookNames(IDispatch** value) {
  const auto here = [&] {
    return Call([&] {
      Output(value) = nullptr;
      *value = new ItemsObject(items_, Lifetime(), Below().BookNames());
    });
  };
  return Route(&IAddressBook::get_BookNames, here, value);
}

HRESULT STDMETHODCALLTYPE AddressBookObject::Find(BSTR beginning, short* value) {
  const auto here = [&] { return Answer(value, &AddressBook::Find, beginning); };
  return Route(&IAddressBook::Find, here, beginning, value);
}

#define METHOD(name)                                           \
  HRESULT STDMETHODCALLTYPE AddressBookObject::name() {        \
    const auto here = [&] { return Run(&AddressBook::name); }; \
    return Route(&IAddressBook::name, here);                   \
  }

METHOD(CloseAddressBook)
METHOD(MoveFirst)
METHOD(MoveNext)
METHOD(MoveLast)
METHOD(MovePrevious)
METHOD(ShowAddressBook)
#undef METHOD

#define GET(name, type, member)                                            \
  HRESULT STDMETHODCALLTYPE AddressBookObject::get_##name(type* value) {   \
    const auto here = [&] { return Answer(value, &AddressBook::member); }; \
    return Route(&IAddressBook::get_##name, here, value);                  \
  }

GET(Name, BSTR, Name)
GET(Address, BSTR, Address)
GET(sessionHandle, VARIANT, SessionHandle)
GET(Count, LONG, Count)
GET(BOF, short, BeginMark)
GET(EOF, short, EndMark)
GET(EntryType, short, EntryType)
#undef GET

}  // namespace quillon
