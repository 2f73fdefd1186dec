// The program entry: registers the server, or builds the objects of the process and serves clients
// until the last one is gone.
#include <windows.h>
#include <exception>
#include <memory>
#include <objbase.h>
#include <shlobj.h>
#include <string>
#include <vector>

#include "Commit.h"
#include "Version.h"
#include "administration/AuthorizeCommand.h"
#include "administration/CheckCommand.h"
#include "administration/ConfigureCommand.h"
#include "automation/AddressBookObject.h"
#include "automation/AdministratorConsole.h"
#include "automation/BusyFilter.h"
#include "automation/ClassObjects.h"
#include "automation/ComCall.h"
#include "automation/CommandLine.h"
#include "automation/DialerObject.h"
#include "automation/ProcessLifetime.h"
#include "automation/PublicClass.h"
#include "automation/Registration.h"
#include "automation/ServerObject.h"
#include "automation/StartNotice.h"
#include "automation/TypeLibrary.h"
#include "backends/activemsg/ActiveMessagingBackEnd.h"
#include "backends/activemsg/ActiveMessagingMailSystem.h"
#include "backends/mapi/MapiBackEnd.h"
#include "backends/mapi/MapiMailSystem.h"
#include "backends/mhs/MhsBackEnd.h"
#include "backends/mhs/MhsMailSystem.h"
#include "backends/notes/NotesBackEnd.h"
#include "backends/notes/NotesMailSystem.h"
#include "backends/vim/VimBackEnd.h"
#include "backends/vim/VimMailSystem.h"
#include "backends/vines/VinesBackEnd.h"
#include "backends/vines/VinesMailSystem.h"
#include "core/BackgroundThread.h"
#include "dialogs/win32/LoginDialog.h"
#include "dialogs/win32/SelectSystemDialog.h"
#include "dialogs/win32/Win32MailDialog.h"
#include "internet/FetchedIndex.h"
#include "internet/InternetMailSystem.h"
#include "internet/ProtocolLog.h"
#include "internet/ServerSections.h"
#include "mail/AsynchNotifier.h"
#include "mail/INIUtilities.h"
#include "mail/TemporaryFolder.h"
#include "oauth/ProviderTokens.h"
#include "platform/BackgroundHttps.h"
#include "platform/Platform.h"
#include "platform/win32/ComSecurity.h"
#include "platform/win32/DataProtection.h"
#include "platform/win32/LibrarySearch.h"
#include "platform/win32/ProviderLibrary.h"
#include "platform/win32/Rasapi32.h"
#include "platform/win32/SspiLogin.h"
#include "platform/win32/VbaMap32.h"
#include "platform/win32/Vim32.h"
#include "platform/win32/WideText.h"
#include "platform/win32/Win32AutomationObject.h"
#include "platform/win32/Win32MessageBox.h"
#include "platform/win32/Win32ProgressDisplay.h"
#include "platform/win32/Win32RichTextLibrary.h"
#include "platform/win32/Win32Workstation.h"
#include "platform/win32/WinHttp.h"
#include "ports/CodePage.h"
#include "ports/FileSystem.h"
#include "ports/LocalClock.h"
#include "ports/Network.h"
#include "server/ConfigurationFile.h"
#include "server/Environment.h"
#include "server/MailSystems.h"
#include "server/StartUp.h"
#include "server/VersionText.h"

namespace quillon {
namespace {

std::string DirectoryOf(const std::string& path) {
  return path.substr(0, path.find_last_of("\\/"));
}

std::string UserDirectory() {
  wchar_t path[MAX_PATH] = {};
  SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, path);
  return Utf8FromWide(path);
}

// What administrators have said of servers.
struct AdministrationFiles {
  AdministrationFiles(FileSystem& files, clsINIUtilities& own, const std::string& programDirectory)
      : machine(files, MachineConfigurationPath(files, programDirectory)),
        servers(own, machine.Path().empty() ? nullptr : &machine, protection) {}

  clsINIUtilities machine;
  DataProtection protection;
  ServerSections servers;
};

std::unique_ptr<SimpleMapi> MakeSimpleMapi(const CodePage& codePage) {
  if (VbaMap32::IsInstalled()) return std::make_unique<VbaMap32>(codePage);
  return std::make_unique<Mapi32>(codePage);
}

// Everything below the COM skin, one of each for the process.
struct Application {
  explicit Application(const std::string& directory) : programDirectory(directory) {
    mailSystems.Add(mapi);
    mailSystems.Add(vim);
    mailSystems.Add(mhs);
    mailSystems.Add(activeMessaging);
    mailSystems.Add(notes);
    mailSystems.Add(vines);
    mailSystems.Add(internet);
  }

  const std::string programDirectory;
  SharedState shared;
  std::unique_ptr<NetworkLoop> loop = MakeNetworkLoop();
  std::unique_ptr<FileSystem> files = MakeFileSystem();
  std::unique_ptr<CodePage> codePage = MakeAnsiCodePage();
  std::unique_ptr<CharacterSets> characterSets = MakeCharacterSets();
  std::unique_ptr<CharacterEncoder> characterEncoder = MakeCharacterEncoder();
  std::unique_ptr<LocalClock> clock = MakeLocalClock();
  Win32Workstation workstation;
  Win32MessageBox messageBox;
  BusyGate busy;
  LoginDialog loginPrompt{*loop, busy};
  Win32MailDialog mailDialog{*loop, *files};
  SelectSystemDialog mailSystemDialog{*loop};
  const std::string configurationFile =
      ConfigurationPath(*files, programDirectory, UserDirectory());
  clsINIUtilities configuration{*files, configurationFile};
  AdministrationFiles administration{*files, configuration, programDirectory};
  ProtocolLog protocolLog{*files, DirectoryOf(configurationFile),
                          "--- Quillon " QUILLON_VERSION_AND_COMMIT};
  AsynchNotifier notifier;
  Win32ProgressDisplay progress{*loop};
  const std::string version = VersionText(kVersionMajor, kVersionMinor);
  // Checks of certificates may outlive everything else.
  TlsLibrary& tls = *MakeTlsLibrary().release();
  Crypto& crypto = *MakeCrypto().release();
  FetchedIndex fetched{*files, crypto, UserDirectory()};
  const SspiLogin systemLogin;
  BackgroundHttps https{*loop, PostWithWinHttp};
  ProviderTokens tokens{*loop, https,
                        [this](const OAuthAccount& account, const std::string& refreshToken) {
                          administration.servers.ReplaceRefreshToken(account, refreshToken);
                        }};
  InternetBackEnd internetBackEnd{{*loop,
                                   *loop,
                                   {tls, crypto, tokens, RunInBackground, &systemLogin},
                                   *files,
                                   *codePage,
                                   *characterSets,
                                   *characterEncoder,
                                   *clock,
                                   loginPrompt,
                                   messageBox,
                                   configuration,
                                   administration.servers,
                                   fetched,
                                   protocolLog,
                                   notifier,
                                   progress},
                                  {version, {}}};
  InternetMailSystem internet{internetBackEnd};
  std::unique_ptr<SimpleMapi> mapiLibrary = MakeSimpleMapi(*codePage);
  MapiBackEnd mapiBackEnd{{*mapiLibrary, *files, messageBox, loginPrompt, configuration}};
  MapiMailSystem mapi{workstation, *files, &mapiBackEnd};
  Vim32 vimLibrary{*codePage};
  VimBackEnd vimBackEnd{{vimLibrary, workstation, *files, *clock, messageBox, loginPrompt}};
  VimMailSystem vim{workstation, &vimBackEnd};
  MhsAccounts mhsAccounts{*files, workstation, configuration};
  MhsBackEnd mhsBackEnd{{mhsAccounts, *files, *clock, messageBox, loginPrompt}};
  MhsMailSystem mhs{mhsAccounts, &mhsBackEnd};
  Win32AutomationObjects automationObjects;
  Win32RichTextLibrary richText{*codePage};
  ActiveMessagingLibrary activeMessagingLibrary{automationObjects};
  ActiveMessagingBackEnd activeMessagingBackEnd{
      {activeMessagingLibrary, richText, *files, *clock, messageBox, loginPrompt, configuration}};
  ActiveMessagingMailSystem activeMessaging{activeMessagingLibrary, &activeMessagingBackEnd,
                                            &mapiBackEnd};
  NotesBackEnd notesBackEnd{{automationObjects, workstation, *files, messageBox}};
  NotesMailSystem notes{workstation, &notesBackEnd};
  ProviderLibrary providerLibrary;
  VinesLibrary vinesLibrary{providerLibrary, configuration};
  VinesBackEnd vinesBackEnd{{vinesLibrary, *files, messageBox, loginPrompt}};
  VinesMailSystem vines{vinesLibrary, &vinesBackEnd};
  MailSystems mailSystems;
  Environment environment{shared,
                          *files,
                          *codePage,
                          workstation,
                          messageBox,
                          mailDialog,
                          mailSystemDialog,
                          mailSystems,
                          configuration,
                          protocolLog,
                          notifier,
                          busy,
                          {version, std::string(QUILLON_VERSION_TEXT) + ".0", programDirectory}};
  Rasapi32 rasLibrary{*codePage};
  DialerEnvironment dialers{shared, *loop, rasLibrary, workstation, messageBox};
};

class ComApartment {
 public:
  ComApartment() { ThrowIfFailed(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); }
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;
  ~ComApartment() { CoUninitialize(); }
};

// A Server of the process's own, which keeps the process alive as an object of a client does.
std::shared_ptr<Server> MakeOwnServer(ProcessLifetime& lifetime, Environment& environment) {
  struct Own {
    Own(ProcessLifetime& process, Environment& world) : reference(process), server(world) {}

    ProcessReference reference;
    Server server;
  };
  const auto own = std::make_shared<Own>(lifetime, environment);
  return {own, &own->server};
}

// Whether each client has a process of its own, which a user, or else an administrator, decides.
bool ServesOneClient(Application& application) {
  constexpr const char* kSection = "Server";
  constexpr const char* kKey = "ProcessPerClient";
  auto& machine = application.administration.machine;
  const bool everybody = !machine.Path().empty() && machine.ReadTrueFalse(kSection, kKey, false);
  return application.configuration.ReadTrueFalse(kSection, kKey, everybody);
}

constexpr wchar_t kWhatThisIs[] =
    L"Quillon, a mail server for programs\r\n"
    L"\r\n"
    L"There is nothing to do here: Windows starts it by itself when a script or a program "
    L"creates\r\n"
    L"QuillonInterface.Server, and it ends when nobody needs it any more.\r\n"
    L"quillon.exe /? tells what else it can do.";

constexpr wchar_t kNotRegistered[] =
    L"\r\n\r\nIt is not registered yet, so no program finds it: quillon.exe /RegServer does that.";

void TellWhatThisIs() {
  CLSID registered = {};
  const bool found = SUCCEEDED(CLSIDFromProgID(kServerClass.progId, &registered));
  Inform(std::wstring(kWhatThisIs) + (found ? L"" : kNotRegistered));
}

// What clients are told of the classes and their members.
struct PublicTypes {
  explicit PublicTypes(const std::wstring& program) : library(program) {}

  const TypeLibrary library;
  const ServerTypes server{library};
  const ClassType dialer{library, kDialerClass};
};

void AddClasses(ClassObjects& classes, const PublicTypes& types, ProcessLifetime& lifetime,
                Application& application) {
  classes.Add(kServerClass, lifetime, [&]() -> IServer* {
    return new ServerObject(types.server, lifetime, application.environment);
  });
  classes.Add(kAddressBookClass, lifetime, [&]() -> IAddressBook* {
    return new AddressBookObject(types.server.addressBook, types.server.items, lifetime);
  });
  classes.Add(kDialerClass, lifetime, [&]() -> IDialer* {
    return new DialerObject(types.dialer, lifetime, application.dialers);
  });
}

// Returns the exit status: that of the start-up which the command line asks for, if any.
int Serve(const CommandLine& line) {
  auto apartment = std::make_unique<ComApartment>();
  ThrowIfFailed(SecureCalls(kProgramId));
  const std::wstring program = ProgramPath();
  Application application(DirectoryOf(Utf8FromWide(program)));
  BusyFilter::Install(application.busy);
  const bool oneClient = ServesOneClient(application);
  ClassObjects classes(oneClient ? ClassObjects::Clients::One : ClassObjects::Clients::All);
  ProcessLifetime lifetime;
  const PublicTypes types(program);
  AddClasses(classes, types, lifetime, application);
  int status = 0;
  StartUp startUp([&] { return MakeOwnServer(lifetime, application.environment); },
                  application.messageBox);
  application.loop->Post([&] { status = startUp.Run(Utf8FromWide(line.rest)); });
  if (line.bare) application.loop->Post(TellWhatThisIs);
  lifetime.Serve([&classes] { classes.Revoke(); });
  if (oneClient && !line.rest.empty()) classes.Revoke();  // the command line is the client
  ThrowIfFailed(CoResumeClassObjects());
  RemoveAbandonedFolders(*application.files, application.files->TempDirectory());
  lifetime.Run(*application.loop, [&application](const std::string& text) {
    application.protocolLog.WriteDebug("Unexpected failure: ", text);
    OutputDebugStringW(WideFromUtf8("Quillon: unexpected failure: " + text + "\n").c_str());
  });
  application.notifier.Reset();
  startUp.Release();
  apartment.reset();  // lets go of the objects of clients that are still there
  return status;
}

LSTATUS ChangeRegistration(StartMode mode) {
  const Registration registration(ProgramPath(), kPublicClasses);
  const auto machine = Registration::PerMachine();
  const auto user = Registration::PerUser();
  switch (mode) {
    case StartMode::Register: {
      const LSTATUS result = registration.Register(machine);
      return result == ERROR_ACCESS_DENIED ? registration.Register(user) : result;
    }
    case StartMode::Unregister: {
      const LSTATUS result = registration.Unregister(machine);
      const LSTATUS userResult = registration.Unregister(user);
      return result == ERROR_SUCCESS ? userResult : result;
    }
    case StartMode::RegisterPerUser:
      return registration.Register(user);
    case StartMode::UnregisterPerUser:
      return registration.Unregister(user);
    default:
      return ERROR_INVALID_PARAMETER;
  }
}

constexpr wchar_t kHelp[] =
    L"Quillon, a mail server for programs\r\n"
    L"\r\n"
    L"quillon.exe [SWITCH | KEY=VALUE, ...]\r\n"
    L"\r\n"
    L"  /RegServer           registers it for everybody, or for you when only that is allowed\r\n"
    L"  /RegServerPerUser    registers it for you\r\n"
    L"  /UnregServer         takes both registrations out\r\n"
    L"  /UnregServerPerUser  takes yours out\r\n"
    L"  /Configure NAME KEY VALUE   sets a key of a mail server; /Configure NAME shows them\r\n"
    L"  /Authorize NAME      asks the provider of a server for permission, with a code\r\n"
    L"  /Check NAME          tries the server as scripts would, and sends nothing\r\n"
    L"  /version             tells the version\r\n"
    L"  /?                   tells this\r\n"
    L"\r\n"
    L"Keys, several of them separated by commas:\r\n"
    L"  LN  login name     MS  mail system, by its number\r\n"
    L"  PW  password       LI  Y: log in\r\n"
    L"  PO  post office    SD  Y: show the dialog that sends mail\r\n"
    L"                     KR  Y: stay until the process is told to end\r\n"
    L"\r\n"
    L"Windows starts it by itself, with neither, when a program needs it.";

std::vector<std::string> TextsOf(const std::vector<std::wstring>& words) {
  std::vector<std::string> texts;
  texts.reserve(words.size());
  for (const auto& word : words) texts.push_back(Utf8FromWide(word));
  return texts;
}

// What an administrator has asked for; the exit status.
int Administer(const CommandLine& line) {
  const auto programDirectory = DirectoryOf(Utf8FromWide(ProgramPath()));
  const auto files = MakeFileSystem();
  clsINIUtilities own(*files, ConfigurationPath(*files, programDirectory, UserDirectory()));
  AdministrationFiles administration(*files, own, programDirectory);
  AdministratorConsole console;
  if (line.mode == StartMode::Authorize) {
    const auto loop = MakeNetworkLoop();
    BackgroundHttps https(*loop, PostWithWinHttp);
    return Authorize(TextsOf(line.arguments), administration.servers, {*loop, https, console}) ? 0
                                                                                               : 1;
  }
  return Configure(TextsOf(line.arguments), administration.servers, console) ? 0 : 1;
}

// With the parts that serve scripts, so that it finds what they would.
int TryServers(const CommandLine& line) {
  const ComApartment apartment;
  Application application(DirectoryOf(Utf8FromWide(ProgramPath())));
  AdministratorConsole console;
  const CheckPorts ports{
      *application.loop,
      *application.loop,
      {application.tls, application.crypto, application.tokens, RunInBackground,
       &application.systemLogin},
      {*application.files, *application.codePage, *application.clock, application.protocolLog},
      console};
  return Check(TextsOf(line.arguments), application.administration.servers, ports) ? 0 : 1;
}

int Register(StartMode mode) {
  const LSTATUS result = ChangeRegistration(mode);
  if (result == ERROR_SUCCESS) return 0;
  Complain(L"The registration could not be changed: " + SystemText(static_cast<DWORD>(result)));
  return 1;
}

int Start() {
  const CommandLine line = ParseCommandLine(GetCommandLineW());
  switch (line.mode) {
    case StartMode::Serve:
      return Serve(line);
    case StartMode::ShowHelp:
      Inform(kHelp);
      return 0;
    case StartMode::ShowVersion:
      Inform(L"Quillon " + WideFromUtf8(QUILLON_VERSION_AND_COMMIT));
      return 0;
    case StartMode::Refuse:
      Complain(L"There is no switch " + line.unknown + L"; /? tells which there are.");
      return 1;
    case StartMode::Check:
      return TryServers(line);
    case StartMode::Configure:
    case StartMode::Authorize:
      return Administer(line);
    default:
      return Register(line.mode);
  }
}

}  // namespace
}  // namespace quillon

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
  try {
    quillon::SearchLibrariesSafely();
    return quillon::Start();
  } catch (const quillon::HresultError& error) {
    quillon::Complain(L"The server could not start: " +
                      quillon::SystemText(static_cast<DWORD>(error.Number())));
  } catch (const std::exception& error) {
    quillon::Complain(quillon::WideFromUtf8(error.what()));
  }
  return 1;
}
