// The public interface, member by member. A difference between this list and the type library
// breaks programs that are in use: a member may be added at the end, and nothing else may change.
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include "AutomationWorld.h"

namespace quillon::testing {
namespace {

constexpr char kContract[] = R"(
mailSystem: get put returns variant
AddRecipientTo: method theRecipient:string
ResolveNameEx: method tName:string, returns variant
AddRecipientCc: method theRecipient:string
AddRecipientBcc: method theRecipient:string
NewMessage: method
Send: method
Password: put returns variant
postOffice: get put returns variant
subject: get put returns variant
Message: get put returns variant
AddAttachment: method theAttachment:string
ErrorDisplay: get put returns variant
SetNativeSystem: method
QueryMailSystem: method mailSystem:short, returns variant
Certify: get put returns variant
GetMessageItems: method itemType:short, itemArray:string array, itemCount:short
NativeMailDialog: get put returns variant
DialogCaption: get put returns variant
DialogErrorOnCancel: get put returns variant
loginName: get put returns variant
ClearMessageItems: method itemType:short
ShowMailDialog: method
ServerVersion: get returns variant
ServerPath: get returns variant
LoadMessageHeaders: method
MaximumHeaders: get put returns variant
Folder: get put returns variant
unreadOnly: get put returns variant
messageCount: get returns variant
UnreadCount: get returns variant
LoadMessage: method
suppressAttachments: get put returns variant
peekOnly: get put returns variant
DateSent: get returns variant
messageIndex: get put returns variant
DeleteMessage: method
MoveMessage: method folderTo:string
GetMessageItemString: method itemType:short, returns string
GetMessageItemCount: method itemType:short, returns variant
GetHeaderItems: method itemType:short, itemArray:string array, itemCount:short
GetHeaderItemString: method itemType:short, returns string
undocumented1: get put returns variant
Login: method
Logout: method
sessionHandle: get returns variant
forceDownload: get put returns variant
applicationName: get put returns variant
dateFormat: get put returns variant
ResolveName: method tName:string, returns variant
NameResolution: get put returns variant
profile: get put returns variant
dateSort: get put returns variant
recipientDelimiter: get put returns variant
HeadersInMessage: get put returns variant
from: get put returns variant
SMTPServer: get put returns variant
ProgressBar: get put returns variant
attachmentEncoding: get put returns variant
ShowMailSystemDialog: method
XMailer: get put returns variant
TimeoutProtocol: get put returns variant
TimeoutConnect: get put returns variant
ProgressBarThreshold: get put returns variant
SMTPPort: get put returns variant
POPPort: get put returns variant
LoginDialog: get put returns variant
AsynchObjectRegister: method asynchObject:object, objectType:long, config:long, reserved:variant
AsynchObjectUnregister: method asynchObject:object, objectType:long
AsynchAbort: method
GetWebFormValue: method fieldName:string, returns string
MessageType: get put returns variant
hWND: get put returns variant
AddXHeader: method theName:string, theValue:string
suppressAlternatives: get put returns variant
AddAlternative: method theAlternative:string, contentType:string, reserved:short
GetHeaderValueByName: method theField:string, returns string
UTCOffset: get put returns variant
LoadMessageIdentifiers: method
SessionHandleEx: get put returns variant
LoadMessageFromFile: method Filespec:string
SaveMessageToFile: method Filespec:string
AttachmentDirectory: get put returns string
ZipPassword: get put returns string
replyTo: get put returns string
ServerType: get returns short
CreateFolder: method newFolderSpec:string
FolderDelimiter: get put returns string
DeleteFolder: method theFolderSpec:string
CopyFolder: method folderFromSpec:string, folderToSpec:string, copySubfolders:short
GetFolderList: method parentFolderSpec:string, returnSpecs:short, allCategories:short, folderArray:string array, folderCount:long
FolderExists: method theFolderSpec:string, returns short
SessionObject: get put returns object
MessageObject: get returns object
FolderObject: get returns object
CopyMessage: method folderTo:string
GetFolderListString: method parentFolderSpec:string, returnSpecs:short, stringDelim:string, allCategories:short, folderString:string, folderCount:long
ReturnShortFilespecs: get put returns variant
GetInterfaceString: method itemType:short, returns string
Post: method
ConversationIndex: get put returns string
NewMessagePost: method
DefaultProfile: get returns string
FolderList: get parentFolderSpec:string, returnSpecs:short, reserved:short, returns collection
HeaderItems: get itemType:short, returns collection
MessageItems: get itemType:short, returns collection
DecodeError: method errNumberIn:long, mailSystem:short, errDecoded:long, errDecodedAPI:long, errMessage:string
InternetLogging: get put returns short
Importance: get put returns variant
DeliveryReport: get put returns variant
DeliveryPriority: get put returns variant
signed: get put returns variant
Encrypt: get put returns variant
Sensitivity: get put returns variant
PreventCopying: get put returns variant
GetMessageItem: method theItem:variant, itemIndex:long, returns variant
ConcatenateMessage: get put returns variant
SMTPSecurity: get put returns short
POPSecurity: get put returns short
SMTPLoginName: get put returns string
SMTPPassword: put returns string
Authentication: get put returns string
AccessToken: put returns string
PinnedCertificate: get put returns string
Extensions: get put returns short
DetailedErrors: get put returns short
TLSVersion: get returns string
ServerCertificate: get returns string
LastServerReply: get returns string
RawHeaders: get put returns short
Charset: get put returns string
ModernHeaders: get put returns short
AddHeader: method theName:string, theValue:string
HTMLMessage: get put returns string
AddInlineFile: method theFile:string, contentId:string
AddAttachmentEx: method theAttachment:string, theName:string, contentType:string
ExpandTnef: get put returns short
TrackUnread: get put returns short
)";

std::string TypeName(const TYPEDESC& type) {
  switch (type.vt) {
    case VT_PTR:
      return TypeName(*type.lptdesc);
    case VT_VARIANT:
      return "variant";
    case VT_BSTR:
      return "string";
    case VT_I2:
      return "short";
    case VT_I4:
      return "long";
    case VT_DISPATCH:
      return "object";
    case VT_SAFEARRAY:
      return TypeName(*type.lptdesc) + " array";
    default:
      return "type " + std::to_string(type.vt);
  }
}

// One member as the library describes it, in the notation of the contract.
struct Member {
  std::string name;
  std::string kinds;
  std::string signature;
  DISPID id = 0;
};

std::string KindName(INVOKEKIND kind) {
  switch (kind) {
    case INVOKE_FUNC:
      return "method";
    case INVOKE_PROPERTYGET:
      return "get";
    default:
      return "put";
  }
}

std::string Signature(const FUNCDESC& function, const std::vector<std::string>& names) {
  std::string signature;
  for (UINT i = 0; i < static_cast<UINT>(function.cParams); ++i) {
    const ELEMDESC& element = function.lprgelemdescParam[i];
    const bool result = (element.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) != 0;
    signature += signature.empty() ? " " : ", ";
    signature += (result ? "returns " : names.at(i + 1) + ":") + TypeName(element.tdesc);
  }
  return signature;
}

std::vector<Member> Describe(ITypeInfo* info, UINT count) {
  std::vector<Member> members;
  for (UINT i = 0; i < count; ++i) {
    FUNCDESC* function = nullptr;
    EXPECT_EQ(info->GetFuncDesc(i, &function), S_OK);
    // The slots follow IDispatch without a gap.
    EXPECT_EQ(function->oVft, static_cast<SHORT>((7 + i) * sizeof(void*)));
    BSTR texts[16] = {};
    UINT found = 0;
    info->GetNames(function->memid, texts, 16, &found);
    std::vector<std::string> names;
    for (UINT n = 0; n < found; ++n) {
      names.push_back(Utf8FromBstr(texts[n]));
      SysFreeString(texts[n]);
    }
    const std::string kind = KindName(function->invkind);
    if (!members.empty() && members.back().name == names.at(0)) {
      if (!members.back().kinds.ends_with(kind)) members.back().kinds += " " + kind;
    } else {
      const bool put = function->invkind == INVOKE_PROPERTYPUT;
      members.push_back({names.at(0), kind,
                         put ? " returns " + TypeName(function->lprgelemdescParam[0].tdesc)
                             : Signature(*function, names),
                         function->memid});
    }
    info->ReleaseFuncDesc(function);
  }
  return members;
}

TEST(TypeLibraryTest, ListsTheMembersInTheirOrder) {
  ComWorld world;
  HREFTYPE reference = 0;
  ComPtr<ITypeInfo> info;
  const auto dispatch = world.Library().Info(__uuidof(IServer));
  ASSERT_EQ(dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference), S_OK);
  ASSERT_EQ(dispatch->GetRefTypeInfo(reference, info.Put()), S_OK);
  const auto count = static_cast<UINT>(world.ServerType().Functions().size());
  const std::vector<Member> members = Describe(info.Get(), count);

  std::istringstream contract(kContract + 1);
  std::string line;
  for (const Member& member : members) {
    ASSERT_TRUE(std::getline(contract, line)) << "extra member " << member.name;
    // A collection is an object to a client.
    if (const auto at = line.find("collection"); at != std::string::npos) {
      line.replace(at, 10, "object");
    }
    EXPECT_EQ(member.name + ": " + member.kinds + member.signature, line);
    EXPECT_EQ(member.id, &member - members.data() + 1) << member.name;
  }
  EXPECT_FALSE(std::getline(contract, line)) << "missing member " << line;
}

}  // namespace
}  // namespace quillon::testing
