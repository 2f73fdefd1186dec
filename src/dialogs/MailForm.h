// The message being composed, as it stands in the send dialog, and back.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/ServerError.h"
#include "mail/InstanceState.h"
#include "mail/SharedState.h"
#include "ports/MailDialog.h"

namespace quillon {

class FileSystem;

// What the dialog shows and changes.
struct Composition {
  std::vector<std::string> to;
  std::vector<std::string> cc;
  std::vector<std::string> bcc;
  std::string subject;
  std::string body;
  std::vector<Attachment> attachments;
  ShortBool certify = kFalse;
  std::int16_t importance = 3;
};

Composition CompositionOf(const MessageBuffers& message, const InstanceState& instance);
void PutComposition(Composition composition, MessageBuffers& message, InstanceState& instance);

MailForm FormOf(const Composition& composition, const InstanceState& instance);

// Why a form cannot be sent. Without a text it has that of its code.
class MailFormFailure : public ServerError {
 public:
  MailFormFailure(std::int32_t code, MailField field, std::string text = {})
      : ServerError(code, std::move(text)), field_(field) {}

  MailField Field() const noexcept { return field_; }

 private:
  MailField field_;
};

// Throws MailFormFailure 520 when the list holds more files than a message can have.
void CheckCount(const std::vector<MailForm::File>& list);
// Throws MailFormFailure 521, with the file in its text, when it does not exist.
void CheckFile(FileSystem& files, const std::string& path);

// What the user has made of `before`; what he has not touched is as it was, to the last byte.
// Throws MailFormFailure by the rules of the members that fill the message (516 to 521).
Composition EditedComposition(const MailForm& form, const Composition& before,
                              const InstanceState& instance, FileSystem& files);

// The list as the user edits it. It splits into the same recipients; one with the delimiter in its
// name gets quotes around that.
std::string JoinRecipients(const std::vector<std::string>& recipients,
                           const InstanceState& instance);

// Each run of characters that end a line is one blank.
std::string OneLine(std::string_view text);
// Every line end is CR LF.
std::string WithWholeLineEnds(std::string_view text);

}  // namespace quillon
