#include "dialogs/MailForm.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <utility>

#include "core/ErrorCode.h"
#include "core/RecipientText.h"
#include "core/Text.h"
#include "ports/FileSystem.h"

namespace quillon {

namespace {

// The counts of the public interface are short integers.
constexpr std::size_t kListLimit = std::numeric_limits<std::int16_t>::max();

struct RecipientLine {
  std::string MailForm::*text;
  std::vector<std::string> Composition::*list;
  MailField field;
  std::int32_t tooMany;
};

constexpr std::array kLines{
    RecipientLine{&MailForm::to, &Composition::to, MailField::To, error_code::kTooManyTo},
    RecipientLine{&MailForm::cc, &Composition::cc, MailField::Cc, error_code::kTooManyCc},
    RecipientLine{&MailForm::bcc, &Composition::bcc, MailField::Bcc, error_code::kTooManyBcc},
};

constexpr bool EndsLine(char c) {
  return c == '\r' || c == '\n';
}

std::vector<std::string> SplitLine(const std::string& text, const InstanceState& instance) {
  return SplitRecipients(text, instance.recipientDelimiter, instance.recipientBrackets);
}

std::string Quoted(const std::string& recipient) {
  const auto bracket = LastBracket(recipient);
  std::string name = TrimmedCopy(std::string_view(recipient).substr(0, bracket));
  std::replace(name.begin(), name.end(), '"', '\'');
  const auto rest = bracket == std::string::npos ? std::string() : " " + recipient.substr(bracket);
  return '"' + name + '"' + rest;
}

// What was there before stays all that it was.
std::vector<Attachment> CheckedFiles(const MailForm& form, const std::vector<Attachment>& before,
                                     FileSystem& files) {
  CheckCount(form.files);
  std::map<std::pair<std::string, std::string>, const Attachment*> known;
  for (const auto& one : before) known.emplace(std::pair(one.file, one.displayName), &one);
  std::vector<Attachment> attachments;
  attachments.reserve(form.files.size());
  for (const auto& [path, name] : form.files) {
    CheckFile(files, path);
    const auto found = known.find(std::pair(path, name));
    attachments.push_back(found != known.end() ? *found->second : Attachment{path, name});
  }
  return attachments;
}

}  // namespace

void CheckCount(const std::vector<MailForm::File>& list) {
  if (list.size() <= kListLimit) return;
  throw MailFormFailure(error_code::kTooManyAttachments, MailField::Files, "Too many attachments.");
}

void CheckFile(FileSystem& files, const std::string& path) {
  if (files.FileExists(path)) return;
  throw MailFormFailure(error_code::kNoAttachment, MailField::Files,
                        "Attachment does not exist.\r\n" + path);
}

Composition CompositionOf(const MessageBuffers& message, const InstanceState& instance) {
  return {message.to,   message.cc,          message.bcc,     message.subject,
          message.body, message.attachments, message.certify, instance.importance};
}

void PutComposition(Composition composition, MessageBuffers& message, InstanceState& instance) {
  message.to = std::move(composition.to);
  message.cc = std::move(composition.cc);
  message.bcc = std::move(composition.bcc);
  message.subject = std::move(composition.subject);
  message.body = std::move(composition.body);
  message.attachments = std::move(composition.attachments);
  message.certify = composition.certify;
  instance.importance = composition.importance;
}

MailForm FormOf(const Composition& composition, const InstanceState& instance) {
  MailForm form;
  for (const auto& line : kLines) {
    form.*line.text = JoinRecipients(composition.*line.list, instance);
  }
  form.subject = OneLine(composition.subject);
  form.text = WithWholeLineEnds(composition.body);
  form.files.reserve(composition.attachments.size());
  for (const auto& one : composition.attachments) {
    form.files.push_back({one.file, one.displayName});
  }
  form.importance = composition.importance;
  form.receipt = composition.certify != kFalse;
  return form;
}

Composition EditedComposition(const MailForm& form, const Composition& before,
                              const InstanceState& instance, FileSystem& files) {
  const auto old = FormOf(before, instance);
  auto edited = before;
  bool hasRecipient = false;
  for (const auto& line : kLines) {
    auto& list = edited.*line.list;
    if (form.*line.text != old.*line.text) list = SplitLine(form.*line.text, instance);
    if (list.size() > kListLimit) throw MailFormFailure(line.tooMany, line.field);
    hasRecipient = hasRecipient || !list.empty();
  }
  if (!hasRecipient) throw MailFormFailure(error_code::kNoAddressees, MailField::To);
  if (form.subject != old.subject) edited.subject = form.subject;
  if (form.text != old.text) edited.body = form.text;
  edited.attachments = CheckedFiles(form, before.attachments, files);
  if (form.receipt != old.receipt) edited.certify = ToShortBool(form.receipt);
  edited.importance = form.importance;
  return edited;
}

std::string JoinRecipients(const std::vector<std::string>& recipients,
                           const InstanceState& instance) {
  std::vector<std::string> written;
  written.reserve(recipients.size());
  for (const auto& recipient : recipients) {
    auto line = OneLine(recipient);
    const auto parts = SplitLine(line, instance);
    const bool isWhole = parts.size() == 1 && parts.front() == TrimmedCopy(line);
    written.push_back(isWhole ? std::move(line) : Quoted(line));
  }
  return Join(written, instance.recipientDelimiter + " ");
}

std::string OneLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  bool ended = false;
  for (const char c : text) {
    if (!EndsLine(c)) {
      line += c;
    } else if (!ended) {
      line += ' ';
    }
    ended = EndsLine(c);
  }
  return line;
}

std::string WithWholeLineEnds(std::string_view text) {
  std::string whole;
  whole.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (!EndsLine(text[at])) {
      whole += text[at];
      continue;
    }
    whole += "\r\n";
    if (text.substr(at).starts_with("\r\n")) ++at;
  }
  return whole;
}

}  // namespace quillon
