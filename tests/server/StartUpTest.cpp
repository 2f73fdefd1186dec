#include <gtest/gtest.h>
#include <optional>
#include <vector>

#include "server/StartUp.h"
#include "support/TestWorld.h"

namespace quillon {
namespace {

using testing::FakeMailSystem;
using testing::TestWorld;
using Icon = MessageBoxPort::Icon;
using Texts = std::vector<std::string>;

// Tells what it is logged in with.
class LoginRecorder final : public BackEnd {
 public:
  MailResult Login(MailRequest& request) override {
    const auto& own = request.instance;
    logins.push_back(std::to_string(own.mailSystem) + " " + own.loginName + "/" + own.password +
                     "/" + own.postOffice);
    instances = request.shared.instanceCount;
    return result;
  }

  Texts logins;
  int instances = 0;
  MailResult result;
};

class StartUpTest : public ::testing::Test {
 protected:
  StartUpTest() {
    world_.mailSystems.Add(internet_);
    world_.mailSystems.Add(vim_);
    world_.mailSystems.Add(mapi_);
    world_.mailSystems.Add(activeMessaging_);
  }

  int Run(const std::string& commandLine) {
    backEnd_.logins.clear();
    world_.messageBox = {};
    startUp_.emplace([this] { return std::shared_ptr<Server>(world_.NewServer()); },
                     world_.messageBox);
    return startUp_->Run(commandLine);
  }

  TestWorld world_;
  LoginRecorder backEnd_;
  FakeMailSystem internet_{MailFamily::Internet, backEnd_};
  VimMailSystem vim_{world_.workstation, &backEnd_};
  MapiMailSystem mapi_{world_.workstation, *world_.files, &backEnd_};
  ActiveMessagingMailSystem activeMessaging_{world_.activeMessagingLibrary, &backEnd_};
  std::optional<StartUp> startUp_;
};

std::string Repeated(const std::string& item, int times) {
  std::string text;
  for (int i = 0; i < times; ++i) text += item;
  return text;
}

TEST_F(StartUpTest, CarriesOutTheItems) {
  const struct {
    std::string line;
    Texts logins;
    Texts boxes;
  } cases[] = {
      {"LN=joe, PW=a=b , po = x y ,MS=10,LI=Y", {"10 joe/a=b/x y"}, {}},
      {"ms=2,li=yes", {"2 //"}, {}},
      {"LN=joe,LN=,=x,PO,unknown=1,,LI=-1", {"10 joe//"}, {}},
      {"LN=\"a b\",LI=true", {"10 \"a b\"//"}, {}},
      {"LI=no", {}, {}},
      {"LI=1", {}, {}},
      {"LI=Y,LI=F", {}, {}},
      {"MS=2.0 or so,LI=T", {"2 //"}, {}},
      {"MS=+2,LI=T", {"2 //"}, {}},
      {Repeated(",", 19) + "LI=Y", {"10 //"}, {}},
      {Repeated("x=1,", 20) + "LI=Y",
       {},
       {"Quillon OLE Server|The command line has more than 20 "
        "items. Those behind the twentieth are ignored."}},
      {"LI=Y," + std::string(100000, 'x'), {"10 //"}, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line.substr(0, 80));
    EXPECT_EQ(0, Run(c.line));
    EXPECT_EQ(c.logins, backEnd_.logins);
    EXPECT_EQ(c.boxes, world_.messageBox.shown);
    if (!c.logins.empty()) {
      EXPECT_EQ(1, backEnd_.instances);
    }
    EXPECT_EQ(0, world_.shared.instanceCount);
    for (const auto icon : world_.messageBox.icons) EXPECT_EQ(Icon::Warning, icon);
  }
}

TEST_F(StartUpTest, TheObjectStaysOnlyWhenThatIsAskedFor) {
  EXPECT_EQ(0, Run("KR=T"));
  EXPECT_EQ(1, world_.shared.instanceCount);
  startUp_->Release();
  EXPECT_EQ(0, world_.shared.instanceCount);
  EXPECT_EQ(0, StartUp([]() -> std::shared_ptr<Server> { throw std::bad_alloc(); },
                       world_.messageBox)
                   .Run("  "));  // makes none
}

TEST_F(StartUpTest, AFailureIsShownAndEndsIt) {
  backEnd_.result = {7, {}};
  const struct {
    std::string line;
    std::string text;
    std::size_t logins;
  } cases[] = {
      {"MS=77,LI=T,KR=T", "Invalid property value.", 0},
      {"MS=1e999,LI=T,KR=T", "Invalid property value.", 0},
      {"MS=-2,KR=T", "Invalid property value.", 0},
      {"MS=infinity,KR=T", "No mail system was detected on workstation.", 0},
      {"MS=abc,LI=T,KR=T", "No mail system was detected on workstation.", 0},
      {"MS=10,LI=T,SD=T,KR=T", "Undetermined", 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    EXPECT_EQ(1, Run(c.line));
    EXPECT_EQ(Texts{"Quillon OLE Server|" + c.text}, world_.messageBox.shown);
    EXPECT_EQ(std::vector{Icon::Critical}, world_.messageBox.icons);
    EXPECT_EQ(c.logins, backEnd_.logins.size());
    EXPECT_EQ(0, world_.shared.instanceCount);
  }
  const BusyGate::Hold other(world_.busy, true);
  EXPECT_EQ(1, Run("MS=10,LI=Y"));
  EXPECT_EQ(Texts{"Quillon OLE Server|The mail system is busy."}, world_.messageBox.shown);
}

TEST_F(StartUpTest, ActiveMessagingIsWantedWhereMicrosoftsMailIs) {
  world_.configuration.WriteString("Server", "MailSystem", "MAPI");
  world_.workstation.libraries = {"mapi32.dll"};
  EXPECT_EQ(0, Run("LI=Y"));
  EXPECT_EQ(Texts{"1 //"}, backEnd_.logins);
  EXPECT_TRUE(world_.messageBox.shown.empty());

  world_.workstation.maker = "Microsoft Corporation, ";
  EXPECT_EQ(0, Run("LI=Y"));
  EXPECT_EQ(Texts{"1 //"}, backEnd_.logins);
  EXPECT_EQ(Texts{"Quillon OLE Server|You must install Active Messaging to be able to send mail "
                  "via your Microsoft mail system."},
            world_.messageBox.shown);
  EXPECT_EQ(std::vector{Icon::Critical}, world_.messageBox.icons);
  EXPECT_EQ(0, Run("MS=1,LI=Y"));  // has chosen
  EXPECT_TRUE(world_.messageBox.shown.empty());

  ActiveMessagingLibrary installed(world_.objects);
  ActiveMessagingMailSystem present(installed, &backEnd_);
  world_.mailSystems.Add(present);
  world_.workstation.objects = {{"MAPI.Session", 1.1}};
  EXPECT_EQ(0, Run("LI=Y"));
  EXPECT_EQ(Texts{"9 //"}, backEnd_.logins);
  EXPECT_TRUE(world_.messageBox.shown.empty());
}

}  // namespace
}  // namespace quillon
