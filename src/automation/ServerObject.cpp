#include "automation/ServerObject.h"

#include <utility>

#include "automation/AddressBookObject.h"
#include "automation/ItemsObject.h"
#include "automation/NotificationCall.h"
#include "platform/win32/Win32AutomationObject.h"

namespace quillon {

namespace {

// Answered with the object itself. It has no description that calls between processes could be made
// by, so an object of another one never answers it.
constexpr GUID kServerItself{
    0x5d0c4f7e, 0x0b0d, 0x4f4e, {0x9b, 0x52, 0x6d, 0x3a, 0x51, 0xc7, 0x18, 0x2a}};

}  // namespace

ServerObject::ServerObject(const ServerTypes& types, ProcessLifetime& lifetime,
                           Environment& environment)
    : PublicObject(types.server, lifetime, environment), types_(types) {}

HRESULT STDMETHODCALLTYPE ServerObject::QueryInterface(REFIID iid, void** object) {
  if (object == nullptr || iid != kServerItself) return PublicObject::QueryInterface(iid, object);
  *object = this;
  AddRef();
  return S_OK;
}

std::shared_ptr<Server> ServerObject::Behind(IDispatch* object) {
  void* found = nullptr;
  if (object == nullptr || FAILED(object->QueryInterface(kServerItself, &found))) return nullptr;
  auto* const self = static_cast<ServerObject*>(found);
  return {&self->Below(), [self](Server*) { self->Release(); }};
}

HRESULT STDMETHODCALLTYPE ServerObject::QueryService(REFGUID service, REFIID iid, void** object) {
  return Call([&] {
    Output(object) = nullptr;
    if (service != kAddressBookClass.id) throw HresultError(E_NOINTERFACE);
    const auto book = ComPtr<AddressBookObject>::Attach(
        new AddressBookObject(types_.addressBook, types_.items, Lifetime()));
    book->WorkOn(this);
    ThrowIfFailed(book->QueryInterface(iid, object));
  });
}

IDispatch* ServerObject::MakeItems(std::vector<std::string> texts) {
  return new ItemsObject(types_.items, Lifetime(), std::move(texts));
}

#define GET(name, type)                                             \
  HRESULT STDMETHODCALLTYPE ServerObject::get_##name(type* value) { \
    return Answer(value, &Server::Get, Property::name);             \
  }
#define PUT(name, type)                                               \
  HRESULT STDMETHODCALLTYPE ServerObject::put_##name(type newValue) { \
    return Run(&Server::Put, Property::name, newValue);               \
  }
#define GET_PUT(name, type) GET(name, type) PUT(name, type)
#define METHOD(name)                               \
  HRESULT STDMETHODCALLTYPE ServerObject::name() { \
    return Run(&Server::name);                     \
  }
#define METHOD_OF(name, type)                                   \
  HRESULT STDMETHODCALLTYPE ServerObject::name(type argument) { \
    return Run(&Server::name, argument);                        \
  }
#define FUNCTION_OF(name, type, result)                                        \
  HRESULT STDMETHODCALLTYPE ServerObject::name(type argument, result* value) { \
    return Answer(value, &Server::name, argument);                             \
  }
#include "automation/ServerMembers.inc"
#undef GET
#undef PUT
#undef GET_PUT
#undef METHOD
#undef METHOD_OF
#undef FUNCTION_OF

HRESULT STDMETHODCALLTYPE ServerObject::get_signed(VARIANT* value) {
  return Answer(value, &Server::Get, Property::signed_);
}

HRESULT STDMETHODCALLTYPE ServerObject::put_signed(VARIANT newValue) {
  return Run(&Server::Put, Property::signed_, newValue);
}

HRESULT STDMETHODCALLTYPE ServerObject::AddXHeader(BSTR theName, BSTR theValue) {
  return Run(&Server::AddXHeader, theName, theValue);
}

HRESULT STDMETHODCALLTYPE ServerObject::AddHeader(BSTR theName, BSTR theValue) {
  return Run(&Server::AddHeader, theName, theValue);
}

HRESULT STDMETHODCALLTYPE ServerObject::AddAttachmentEx(BSTR theAttachment, BSTR theName,
                                                        BSTR contentType) {
  return Run(&Server::AddAttachmentEx, theAttachment, theName, contentType);
}

HRESULT STDMETHODCALLTYPE ServerObject::AddInlineFile(BSTR theFile, BSTR contentId) {
  return Run(&Server::AddInlineFile, theFile, contentId);
}

HRESULT STDMETHODCALLTYPE ServerObject::AddAlternative(BSTR theAlternative, BSTR contentType,
                                                       short reserved) {
  return Run(&Server::AddAlternative, theAlternative, contentType, reserved);
}

HRESULT STDMETHODCALLTYPE ServerObject::CopyFolder(BSTR folderFromSpec, BSTR folderToSpec,
                                                   short copySubfolders) {
  return Run(&Server::CopyFolder, folderFromSpec, folderToSpec, copySubfolders);
}

HRESULT STDMETHODCALLTYPE ServerObject::GetMessageItems(short itemType, SAFEARRAY** itemArray,
                                                        short* itemCount) {
  return Call([&] { GiveList(Below().GetMessageItems(itemType), itemArray, itemCount); });
}

HRESULT STDMETHODCALLTYPE ServerObject::GetHeaderItems(short itemType, SAFEARRAY** itemArray,
                                                       short* itemCount) {
  return Call([&] { GiveList(Below().GetHeaderItems(itemType), itemArray, itemCount); });
}

HRESULT STDMETHODCALLTYPE ServerObject::GetFolderList(BSTR parentFolderSpec, short returnSpecs,
                                                      short allCategories, SAFEARRAY** folderArray,
                                                      LONG* folderCount) {
  return Call([&] {
    GiveList(Below().GetFolderList(Taken(parentFolderSpec), returnSpecs, allCategories),
             folderArray, folderCount);
  });
}

HRESULT STDMETHODCALLTYPE ServerObject::GetFolderListString(BSTR parentFolderSpec,
                                                            short returnSpecs, BSTR stringDelim,
                                                            short allCategories, BSTR* folderString,
                                                            LONG* folderCount) {
  return Call([&] {
    std::int32_t count = 0;
    LONG& number = Output(folderCount);
    GiveInstead(folderString,
                Below().GetFolderListString(Taken(parentFolderSpec), returnSpecs,
                                            Taken(stringDelim), allCategories, count));
    number = count;
  });
}

HRESULT STDMETHODCALLTYPE ServerObject::get_FolderList(BSTR parentFolderSpec, short returnSpecs,
                                                       short reserved, IDispatch** value) {
  return Call([&] {
    Output(value) = nullptr;
    *value = MakeItems(Below().FolderList(Taken(parentFolderSpec), returnSpecs, reserved));
  });
}

HRESULT STDMETHODCALLTYPE ServerObject::get_HeaderItems(short itemType, IDispatch** value) {
  return Call([&] {
    Output(value) = nullptr;
    *value = MakeItems(Below().HeaderItems(itemType));
  });
}

HRESULT STDMETHODCALLTYPE ServerObject::get_MessageItems(short itemType, IDispatch** value) {
  return Call([&] {
    Output(value) = nullptr;
    *value = MakeItems(Below().MessageItems(itemType));
  });
}

HRESULT STDMETHODCALLTYPE ServerObject::GetMessageItem(VARIANT theItem, LONG itemIndex,
                                                       VARIANT* value) {
  return Answer(value, &Server::GetMessageItem, theItem, itemIndex);
}

HRESULT STDMETHODCALLTYPE ServerObject::AsynchObjectRegister(IDispatch* asynchObject,
                                                             LONG objectType, LONG config,
                                                             VARIANT /*reserved*/) {
  return Call([&] {
    Below().AsynchObjectRegister(MakeNotificationObject(asynchObject), objectType, config);
  });
}

HRESULT STDMETHODCALLTYPE ServerObject::AsynchObjectUnregister(IDispatch* /*asynchObject*/,
                                                               LONG objectType) {
  return Run(&Server::AsynchObjectUnregister, objectType);
}

HRESULT ServerObject::ActiveMessagingObject(AutomationObjectPtr (Server::*member)(),
                                            IDispatch** value) {
  return Call([&] {
    Output(value) = nullptr;
    *value = DispatchOf((Below().*member)()).Detach();
  });
}

HRESULT STDMETHODCALLTYPE ServerObject::get_SessionObject(IDispatch** value) {
  return ActiveMessagingObject(&Server::SessionObject, value);
}

HRESULT STDMETHODCALLTYPE ServerObject::put_SessionObject(IDispatch* newValue) {
  return Call([&] { Below().PutSessionObject(AutomationObjectOf(newValue)); });
}

HRESULT STDMETHODCALLTYPE ServerObject::putref_SessionObject(IDispatch* newValue) {
  return put_SessionObject(newValue);
}

HRESULT STDMETHODCALLTYPE ServerObject::get_MessageObject(IDispatch** value) {
  return ActiveMessagingObject(&Server::MessageObject, value);
}

HRESULT STDMETHODCALLTYPE ServerObject::get_FolderObject(IDispatch** value) {
  return ActiveMessagingObject(&Server::FolderObject, value);
}

// The two decoded numbers are the caller's: they stay as they were passed.
HRESULT STDMETHODCALLTYPE ServerObject::DecodeError(LONG errNumberIn, short* mailSystem,
                                                    LONG* /*errDecoded*/, LONG* /*errDecodedAPI*/,
                                                    BSTR* errMessage) {
  return Call([&] {
    const DecodedError decoded = Below().DecodeError(Taken(errNumberIn));
    short& system = Output(mailSystem);
    GiveInstead(errMessage, decoded.message);
    system = decoded.mailSystem;
  });
}

}  // namespace quillon
