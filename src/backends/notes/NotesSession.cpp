#include "backends/notes/NotesSession.h"

#include <exception>
#include <utility>

#include "backends/notes/NotesIni.h"
#include "backends/notes/NotesNumber.h"
#include "backends/notes/NotesValues.h"
#include "core/AutomationValues.h"

namespace quillon {

namespace {

constexpr const char* kClass = "Notes.NotesSession";
constexpr std::string_view kServerMark = "!!";

NotesMailFile MailFileOf(const std::string& postOffice) {
  const auto mark = postOffice.find(kServerMark);
  if (mark == std::string::npos) return {{}, postOffice};
  return {postOffice.substr(0, mark), postOffice.substr(mark + kServerMark.size())};
}

bool IsOpen(AutomationObject& database) {
  return TruthOf(database.Get("IsOpen"));
}

AutomationObjectPtr GetDatabase(AutomationObject& session, const NotesMailFile& mailFile) {
  return RequireNotesObject(
      session.Call("GetDatabase", Arguments({mailFile.server, mailFile.file})),
      "There is no such database.");
}

// One of several ways to the same: a failure is kept for the case that none leads there.
template <typename Step>
void Try(std::exception_ptr& failure, Step&& step) {
  try {
    std::forward<Step>(step)();
  } catch (const AutomationError& error) {
    if (IsClientGone(error)) throw;
    if (failure == nullptr) failure = std::current_exception();
  }
}

}  // namespace

AutomationObjectPtr NotesSession::Object() {
  if (session_ != nullptr) return session_;
  std::string reason;
  try {
    session_ = objects_.Create(kClass);
  } catch (const AutomationError& error) {
    reason = std::string(" ") + error.what();
  }
  if (session_ == nullptr) {
    throw AutomationError(notes::kNoClient, "The Notes client could not be started." + reason);
  }
  return session_;
}

AutomationObjectPtr NotesSession::MailDatabase(const std::string& postOffice) {
  ForgetLostDatabase();
  if (database_ != nullptr && databaseName_ == postOffice) return database_;
  database_ = nullptr;
  database_ = postOffice.empty() ? OpenOwnMailFile() : OpenMailFile(MailFileOf(postOffice));
  databaseName_ = postOffice;
  return database_;
}

// The client may have ended since the last call, or have closed the database.
void NotesSession::ForgetLostDatabase() {
  if (database_ == nullptr) return;
  try {
    if (!IsOpen(*database_)) database_ = nullptr;
  } catch (const AutomationError& error) {
    if (!IsClientGone(error)) throw;
    End();
  }
}

AutomationObjectPtr NotesSession::OpenMailFile(const NotesMailFile& mailFile) {
  auto database = GetDatabase(*Object(), mailFile);
  if (!IsOpen(*database)) {
    throw AutomationError(notes::kDatabaseNotOpen, "The mail database could not be opened.");
  }
  return database;
}

AutomationObjectPtr NotesSession::OpenOwnMailFile() {
  const auto session = Object();
  std::exception_ptr failure;
  AutomationObjectPtr database;
  Try(failure, [&] {
    auto own = GetDatabase(*session, {});
    own->Call("OpenMail");
    if (IsOpen(*own)) database = std::move(own);
  });
  if (database != nullptr) return database;
  for (const auto& mailFile : MailFilesOf(files_, FindNotesIni(files_, workstation_))) {
    Try(failure, [&] { database = OpenMailFile(mailFile); });
    if (database != nullptr) return database;
  }
  if (failure != nullptr) std::rethrow_exception(failure);
  throw AutomationError(notes::kDatabaseNotOpen, "The mail database could not be opened.");
}

void NotesSession::Use(AutomationObjectPtr clients) {
  End();
  session_ = std::move(clients);
}

void NotesSession::End() {
  database_ = nullptr;
  session_ = nullptr;
  ++number_;
}

}  // namespace quillon
