// The members that show a window: ShowMailDialog the mail system's own, or ours.
#include <new>
#include <optional>
#include <utility>

#include "backends/RecipientParts.h"
#include "core/RecipientText.h"
#include "dialogs/MailForm.h"
#include "dialogs/MailSystemList.h"
#include "mail/AddressBooks.h"
#include "ports/MailSystemDialog.h"
#include "server/ErrorTable.h"
#include "server/MailSystems.h"
#include "server/Server.h"

namespace quillon {

namespace {

// A window that is opened meanwhile belongs to this one. A client may name another one in between,
// which is then the one that stays.
class OwnerForNow {
 public:
  OwnerForNow(SharedState& shared, std::int32_t window)
      : shared_(shared), before_(shared.ownerWindow), window_(window) {
    shared_.ownerWindow = window;
  }
  OwnerForNow(const OwnerForNow&) = delete;
  OwnerForNow& operator=(const OwnerForNow&) = delete;
  ~OwnerForNow() {
    if (shared_.ownerWindow == window_) shared_.ownerWindow = before_;
  }

 private:
  SharedState& shared_;
  const std::int32_t before_;
  const std::int32_t window_;
};

// What the window of one call asks for. The message is the clients' until it is sent, and theirs
// again when it could not be.
class MailDialogCall final : public MailDialogHost {
 public:
  MailDialogCall(Environment& environment, InstanceState& instance, Dispatch& dispatch)
      : environment_(environment),
        instance_(instance),
        dispatch_(dispatch),
        before_(CompositionOf(environment.shared.message, instance)) {}

  MailForm Form() const { return FormOf(before_, instance_); }

  MailFailure Send(const MailForm& form, std::int32_t window) override {
    return Try("Send", [&] {
      auto edited = EditedComposition(form, before_, instance_, environment_.files);
      auto& shared = environment_.shared;
      auto replaced = CompositionOf(shared.message, instance_);
      PutComposition(std::move(edited), shared.message, instance_);
      try {
        const OwnerForNow owner(shared, window);
        dispatch_.Run([](BackEnd& backEnd, MailRequest& request) { return backEnd.Send(request); });
      } catch (...) {
        PutComposition(std::move(replaced), shared.message, instance_);
        throw;
      }
    });
  }

  bool HasAddressBook() override {
    const auto* const books = Books();
    return books != nullptr && books->HasWindow();
  }

  MailFailure ChooseAddresses(MailForm& form, std::int32_t window) override {
    return Try("ShowMailDialog", [&] {
      auto* const books = Books();
      if (books == nullptr) throw ServerError(error_code::kNoAddressBook);
      AddressChoice choice{Entries(form.to), Entries(form.cc), Entries(form.bcc)};
      try {
        const OwnerForNow owner(environment_.shared, window);
        dispatch_.Run([&](BackEnd&, MailRequest& request) { return books->Show(request, choice); });
      } catch (const ServerError& error) {
        if (error.Code() == error_code::kUserAborted) return;
        throw;
      }
      form.to = Line(choice.to);
      form.cc = Line(choice.cc);
      form.bcc = Line(choice.bcc);
    });
  }

 private:
  AddressBooks* Books() const {
    auto* const backEnd = dispatch_.BackEndOrNull();
    return backEnd != nullptr ? backEnd->Books() : nullptr;
  }

  std::vector<AddressEntry> Entries(const std::string& line) const {
    std::vector<AddressEntry> entries;
    for (const auto& recipient :
         SplitRecipients(line, instance_.recipientDelimiter, instance_.recipientBrackets)) {
      auto parts = SplitRecipient(recipient);
      entries.push_back({std::move(parts.name), std::move(parts.address), false});
    }
    return entries;
  }

  std::string Line(const std::vector<AddressEntry>& entries) const {
    std::vector<std::string> recipients;
    recipients.reserve(entries.size());
    for (const auto& entry : entries) {
      recipients.push_back(FormatRecipient(entry.name, entry.address));
    }
    return JoinRecipients(recipients, instance_);
  }

  // What leaves a call of the window's is for the user to read.
  template <class Body>
  static MailFailure Try(const char* member, Body&& body) {
    try {
      std::forward<Body>(body)();
      return {};
    } catch (const MailFormFailure& failure) {
      return {WordsOf(failure), failure.Field()};
    } catch (const ServerError& error) {
      return {WordsOf(error), MailField::None};
    } catch (const std::bad_alloc&) {
      return {"There is not enough memory.", MailField::None};
    } catch (const MailSystemBusy& busy) {
      return {busy.what(), MailField::None};
    } catch (const std::exception&) {
      return {std::string("Undetermined error in ") + member + " method.", MailField::None};
    }
  }

  static std::string WordsOf(const ServerError& error) {
    auto text = error.Text().empty() ? ErrorText(error.Code()) : error.Text();
    return text.empty() ? kUndetermined : text;
  }

  Environment& environment_;
  InstanceState& instance_;
  Dispatch& dispatch_;
  const Composition before_;
};

}  // namespace

// Nothing is held while the user writes: other clients are served, and may change the message that
// the members see, but not the one in the window.
void Server::ShowMailDialog() {
  frame_.Run("ShowMailDialog", MemberKind::Method, [&] {
    environment_.busy.Pass();
    dispatch_.EnsureSystem();
    auto* const backEnd = dispatch_.BackEndOrNull();
    if (backEnd == nullptr) throw ServerError(error_code::kNotSupported);
    auto& window = environment_.mailDialog;
    if (window.Raise()) throw MailSystemBusy();
    if (!window.Available()) throw ServerError(error_code::kUserAborted);
    const auto native =
        state_.nativeMailDialog != kFalse ? backEnd->NumberOfCancelledDialog() : std::nullopt;
    const bool sent = native ? SendInNativeDialog(*native) : SendInOwnDialog();
    if (!sent && state_.dialogErrorOnCancel != kFalse) {
      throw ServerError(error_code::kUserAborted, "User selected cancel in mail dialog.");
    }
  });
}

bool Server::SendInNativeDialog(std::int32_t cancelled) {
  bool sent = true;
  dispatch_.Run([&](BackEnd& backEnd, MailRequest& request) {
    const auto result = backEnd.Send(request);
    sent = result.number != cancelled;
    return sent ? result : MailResult();
  });
  return sent;
}

bool Server::SendInOwnDialog() {
  MailDialogCall call(environment_, state_, dispatch_);
  const auto answer = environment_.mailDialog.Show(
      state_.dialogCaption, environment_.shared.ownerWindow, call.Form(), call);
  if (answer == MailDialog::Answer::Unavailable) throw ServerError(error_code::kUserAborted);
  return answer == MailDialog::Answer::Sent;
}

void Server::ShowMailSystemDialog() {
  frame_.Run("ShowMailSystemDialog", MemberKind::Method, [&] {
    const MailSystemList list([this](MailSystemId system) {
      return environment_.mailSystems.BackEndOf(system) != nullptr && dispatch_.Query(system);
    });
    std::optional<std::size_t> place = list.PlaceOf(state_.mailSystem);
    const auto answer = environment_.mailSystemDialog.Show(
        "Select Mail System", environment_.shared.ownerWindow, list.Choices(), place);
    if (answer != MailSystemDialog::Answer::Selected || !place) {
      throw ServerError(error_code::kUserAborted, "User aborted.");
    }
    dispatch_.SelectSystem(list.Taken(*place, state_.mailSystem));
  });
}

}  // namespace quillon
