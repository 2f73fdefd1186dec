#include "automation/ServerObject.h"

#include <limits>
#include <utility>

#include "automation/Conversion.h"
#include "automation/ItemsObject.h"
#include "automation/NotificationCall.h"
#include "core/ServerError.h"
#include "platform/win32/Bstr.h"
#include "platform/win32/SafeArray.h"

namespace quillon {
namespace {

// What a client passes, as the layer below takes it.
std::string Taken(BSTR text) {
  return Utf8FromBstr(text);
}
std::int16_t Taken(short number) {
  return number;
}
std::int32_t Taken(LONG number) {
  return number;
}
Value Taken(const VARIANT& value) {
  return ValueFromVariant(value);
}
Property Taken(Property property) {
  return property;
}

// What the layer below answers, as the client gets it.
void Give(VARIANT* place, const Value& value) {
  Output(place) = VariantFromValue(value).Detach();
}
void Give(BSTR* place, const Value& value) {
  Output(place) = Bstr(ToText(value)).Detach();
}
void Give(short* place, const Value& value) {
  Output(place) = ToInt16(value);
}

// A list replaces the array that the client passed.
template <class Count>
void GiveList(const std::vector<std::string>& texts, SAFEARRAY** place, Count* count) {
  if (texts.size() > static_cast<std::size_t>(std::numeric_limits<Count>::max())) {
    throw ConversionError(ConversionError::Reason::Overflow);
  }
  SafeArray array = ArrayFromTexts(texts);
  Count& number = Output(count);
  SAFEARRAY*& old = Output(place);
  if (old != nullptr) ThrowIfFailed(SafeArrayDestroy(old));
  old = array.Detach();
  number = static_cast<Count>(texts.size());
}

void GiveInstead(BSTR* place, const std::string& text) {
  Bstr made(text);
  SysFreeString(Output(place));
  *place = made.Detach();
}

}  // namespace

ServerObject::ServerObject(const ServerTypes& types, ComPtr<ITypeInfo> classInfo,
                           ProcessLifetime& lifetime, Environment& environment)
    : DispatchObject(types.server, lifetime),
      types_(types),
      classInfo_(std::move(classInfo)),
      lifetime_(lifetime),
      server_(environment) {}

HRESULT STDMETHODCALLTYPE ServerObject::GetClassInfo(ITypeInfo** info) {
  return Call([&] { Output(info) = ComPtr<ITypeInfo>(classInfo_).Detach(); });
}

template <class Member, class... Arguments>
HRESULT ServerObject::Run(Member member, const Arguments&... arguments) {
  return Call([&] { (server_.*member)(Taken(arguments)...); });
}

template <class Result, class Member, class... Arguments>
HRESULT ServerObject::Answer(Result* value, Member member, const Arguments&... arguments) {
  return Call([&] {
    Output(value) = {};
    Give(value, (server_.*member)(Taken(arguments)...));
  });
}

IDispatch* ServerObject::MakeItems(std::vector<std::string> texts) {
  return new ItemsObject(types_.items, lifetime_, std::move(texts));
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
  return Call([&] { GiveList(server_.GetMessageItems(itemType), itemArray, itemCount); });
}

HRESULT STDMETHODCALLTYPE ServerObject::GetHeaderItems(short itemType, SAFEARRAY** itemArray,
                                                       short* itemCount) {
  return Call([&] { GiveList(server_.GetHeaderItems(itemType), itemArray, itemCount); });
}

HRESULT STDMETHODCALLTYPE ServerObject::GetFolderList(BSTR parentFolderSpec, short returnSpecs,
                                                      short allCategories, SAFEARRAY** folderArray,
                                                      LONG* folderCount) {
  return Call([&] {
    GiveList(server_.GetFolderList(Taken(parentFolderSpec), returnSpecs, allCategories),
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
                server_.GetFolderListString(Taken(parentFolderSpec), returnSpecs,
                                            Taken(stringDelim), allCategories, count));
    number = count;
  });
}

HRESULT STDMETHODCALLTYPE ServerObject::get_FolderList(BSTR parentFolderSpec, short returnSpecs,
                                                       short reserved, IDispatch** value) {
  return Call([&] {
    Output(value) = nullptr;
    *value = MakeItems(server_.FolderList(Taken(parentFolderSpec), returnSpecs, reserved));
  });
}

HRESULT STDMETHODCALLTYPE ServerObject::get_HeaderItems(short itemType, IDispatch** value) {
  return Call([&] {
    Output(value) = nullptr;
    *value = MakeItems(server_.HeaderItems(itemType));
  });
}

HRESULT STDMETHODCALLTYPE ServerObject::get_MessageItems(short itemType, IDispatch** value) {
  return Call([&] {
    Output(value) = nullptr;
    *value = MakeItems(server_.MessageItems(itemType));
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
    server_.AsynchObjectRegister(MakeNotificationObject(asynchObject), objectType, config);
  });
}

HRESULT STDMETHODCALLTYPE ServerObject::AsynchObjectUnregister(IDispatch* /*asynchObject*/,
                                                               LONG objectType) {
  return Run(&Server::AsynchObjectUnregister, objectType);
}

HRESULT ServerObject::ActiveMessagingObject(void (Server::*member)(), IDispatch** value) {
  return Call([&] {
    Output(value) = nullptr;
    (server_.*member)();
  });
}

HRESULT STDMETHODCALLTYPE ServerObject::get_SessionObject(IDispatch** value) {
  return ActiveMessagingObject(&Server::SessionObject, value);
}

HRESULT STDMETHODCALLTYPE ServerObject::put_SessionObject(IDispatch* /*newValue*/) {
  return Run(&Server::SessionObject);
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
    const DecodedError decoded = server_.DecodeError(Taken(errNumberIn));
    short& system = Output(mailSystem);
    GiveInstead(errMessage, decoded.message);
    system = decoded.mailSystem;
  });
}

}  // namespace quillon
