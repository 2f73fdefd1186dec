// The Server that clients hold: takes VARIANT, BSTR and SAFEARRAY apart, calls the Server of the
// layer below, and puts the results together.
#pragma once

#include <memory>
#include <servprov.h>
#include <string>
#include <vector>

#include "automation/PublicObject.h"
#include "quillon_h.h"
#include "server/Server.h"

namespace quillon {

// What the type library says of the class, and of the address books and collections that its
// objects hand out.
struct ServerTypes {
  explicit ServerTypes(const TypeLibrary& library)
      : server(library, kServerClass),
        addressBook(library, kAddressBookClass),
        items(library.Info(__uuidof(IItems)), kErrorSource) {}

  const ClassType server;
  const ClassType addressBook;
  const DualInterface items;
};

class ServerObject final : public PublicObject<IServer, Server, IServiceProvider> {
 public:
  ServerObject(const ServerTypes& types, ProcessLifetime& lifetime, Environment& environment);

  // The Server behind an object of this process, which lives at least as long as the result; null
  // for any other object.
  static std::shared_ptr<Server> Behind(IDispatch* object);

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;

  // The class AddressBook, as the service, is a new one of this object's, for the AddressBook of
  // another process that has been given this object.
  HRESULT STDMETHODCALLTYPE QueryService(REFGUID service, REFIID iid, void** object) override;

#define GET(name, type) HRESULT STDMETHODCALLTYPE get_##name(type* value) override;
#define PUT(name, type) HRESULT STDMETHODCALLTYPE put_##name(type newValue) override;
#define GET_PUT(name, type) GET(name, type) PUT(name, type)
#define METHOD(name) HRESULT STDMETHODCALLTYPE name() override;
#define METHOD_OF(name, type) HRESULT STDMETHODCALLTYPE name(type argument) override;
#define FUNCTION_OF(name, type, result) \
  HRESULT STDMETHODCALLTYPE name(type argument, result* value) override;
#include "automation/ServerMembers.inc"
#undef GET
#undef PUT
#undef GET_PUT
#undef METHOD
#undef METHOD_OF
#undef FUNCTION_OF

  HRESULT STDMETHODCALLTYPE get_signed(VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE put_signed(VARIANT newValue) override;

  HRESULT STDMETHODCALLTYPE AddXHeader(BSTR theName, BSTR theValue) override;
  HRESULT STDMETHODCALLTYPE AddHeader(BSTR theName, BSTR theValue) override;
  HRESULT STDMETHODCALLTYPE AddAttachmentEx(BSTR theAttachment, BSTR theName,
                                            BSTR contentType) override;
  HRESULT STDMETHODCALLTYPE AddInlineFile(BSTR theFile, BSTR contentId) override;
  HRESULT STDMETHODCALLTYPE AddAlternative(BSTR theAlternative, BSTR contentType,
                                           short reserved) override;
  HRESULT STDMETHODCALLTYPE CopyFolder(BSTR folderFromSpec, BSTR folderToSpec,
                                       short copySubfolders) override;

  HRESULT STDMETHODCALLTYPE GetMessageItems(short itemType, SAFEARRAY** itemArray,
                                            short* itemCount) override;
  HRESULT STDMETHODCALLTYPE GetHeaderItems(short itemType, SAFEARRAY** itemArray,
                                           short* itemCount) override;
  HRESULT STDMETHODCALLTYPE GetFolderList(BSTR parentFolderSpec, short returnSpecs,
                                          short allCategories, SAFEARRAY** folderArray,
                                          LONG* folderCount) override;
  HRESULT STDMETHODCALLTYPE GetFolderListString(BSTR parentFolderSpec, short returnSpecs,
                                                BSTR stringDelim, short allCategories,
                                                BSTR* folderString, LONG* folderCount) override;
  HRESULT STDMETHODCALLTYPE get_FolderList(BSTR parentFolderSpec, short returnSpecs, short reserved,
                                           IDispatch** value) override;
  HRESULT STDMETHODCALLTYPE get_HeaderItems(short itemType, IDispatch** value) override;
  HRESULT STDMETHODCALLTYPE get_MessageItems(short itemType, IDispatch** value) override;
  HRESULT STDMETHODCALLTYPE GetMessageItem(VARIANT theItem, LONG itemIndex,
                                           VARIANT* value) override;

  HRESULT STDMETHODCALLTYPE AsynchObjectRegister(IDispatch* asynchObject, LONG objectType,
                                                 LONG config, VARIANT reserved) override;
  HRESULT STDMETHODCALLTYPE AsynchObjectUnregister(IDispatch* asynchObject,
                                                   LONG objectType) override;

  HRESULT STDMETHODCALLTYPE get_SessionObject(IDispatch** value) override;
  HRESULT STDMETHODCALLTYPE put_SessionObject(IDispatch* newValue) override;
  HRESULT STDMETHODCALLTYPE putref_SessionObject(IDispatch* newValue) override;
  HRESULT STDMETHODCALLTYPE get_MessageObject(IDispatch** value) override;
  HRESULT STDMETHODCALLTYPE get_FolderObject(IDispatch** value) override;

  HRESULT STDMETHODCALLTYPE DecodeError(LONG errNumberIn, short* mailSystem, LONG* errDecoded,
                                        LONG* errDecodedAPI, BSTR* errMessage) override;

 private:
  IDispatch* MakeItems(std::vector<std::string> texts);
  HRESULT ActiveMessagingObject(AutomationObjectPtr (Server::*member)(), IDispatch** value);

  const ServerTypes& types_;
};

}  // namespace quillon
