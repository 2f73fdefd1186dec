#include "backends/mhs/MhsAccount.h"

#include "backends/LogonPrompt.h"
#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "core/WholeFile.h"

namespace quillon {

namespace {

constexpr const char* kConfigurationSection = "MHS";
constexpr const char* kPostOfficeKey = "PostOffice";
constexpr const char* kLoginNameKey = "LoginName";
constexpr const char* kWorkgroupKey = "Workgroup";
constexpr const char* kVolumeVariable = "MV";  // the master volume
constexpr const char* kOutgoing = "SND";
constexpr const char* kOwnApplication = "MHS";

}  // namespace

std::string MhsAccounts::Volume() {
  auto volume = configuration_.ReadString(kConfigurationSection, kPostOfficeKey);
  return volume.empty() ? workstation_.EnvironmentText(kVolumeVariable) : volume;
}

// Empty when there is none.
std::string MhsAccounts::MailDirectory(const std::string& volume) const {
  const auto top = WithSeparator(files_, volume);
  auto below = top + "MHS" + files_.Separator() + "MAIL" + files_.Separator();
  if (files_.DirectoryExists(below)) return below;
  return files_.DirectoryExists(top + kOutgoing) ? top : std::string();
}

bool MhsAccounts::IsHere() {
  const auto volume = Volume();
  return !volume.empty() && !MailDirectory(volume).empty();
}

MhsAccount MhsAccounts::Find(LoginPrompt& prompt, MailRequest& request) {
  auto& instance = request.instance;
  const auto volume = instance.postOffice.empty() ? Volume() : instance.postOffice;
  if (volume.empty()) throw ServerError(error_code::kLoginData);
  MhsAccount account;
  account.directory = MailDirectory(volume);
  if (account.directory.empty()) throw ServerError(error_code::kNoPostOffice);
  account.user = instance.loginName;
  if (account.user.empty()) {
    account.user = configuration_.ReadString(kConfigurationSection, kLoginNameKey);
  }
  if (account.user.empty() && instance.loginDialog != kFalse) {
    AskForLogon(prompt, {.caption = "MHS Login", .name = login_label::kUser}, request);
    account.user = instance.loginName;
  }
  if (account.user.empty()) throw ServerError(error_code::kLoginData);
  account.workgroup = configuration_.ReadString(kConfigurationSection, kWorkgroupKey);
  account.application =
      instance.applicationName.empty() ? kOwnApplication : instance.applicationName;
  return account;
}

}  // namespace quillon
