#include "backends/mhs/MhsDraft.h"

#include <string>
#include <vector>

#include "backends/OutgoingFiles.h"
#include "backends/RecipientParts.h"
#include "backends/mhs/MhsErrorText.h"
#include "backends/mhs/MhsFailure.h"
#include "backends/mhs/MhsOutbox.h"
#include "backends/mhs/SmfAddress.h"
#include "backends/mhs/SmfDate.h"
#include "backends/mhs/SmfWriter.h"
#include "core/WholeFile.h"
#include "mail/OutgoingText.h"

namespace quillon {

namespace {

constexpr std::int16_t kNormal = 3;  // the importance in the middle; smaller is higher

std::string DateText(const LocalTime& time) {
  return FormatSmfDate({time.year, time.month, time.day, time.hour, time.minute, time.second});
}

class Draft {
 public:
  Draft(const MhsDraftPorts& ports, const MailRequest& request, const MhsAccount& account)
      : ports_(ports),
        request_(request),
        account_(account),
        date_(DateText(ports.clock.Now())),
        files_(ports.files, request) {}

  void Send() const {
    const auto& source = request_.shared.message;
    MhsOutbox outbox(ports_.files, account_.directory);
    if (!source.to.empty() || !source.cc.empty()) AddMessage(outbox, source.to, source.cc);
    for (const auto& recipient : source.bcc) AddMessage(outbox, {recipient}, {});
    outbox.Commit();
  }

 private:
  using Recipients = std::vector<std::string>;

  std::string Bytes(const std::string& text) const { return ports_.codePage.ToBytes(text); }

  void AddMessage(MhsOutbox& outbox, const Recipients& to, const Recipients& cc) const {
    const auto& source = request_.shared.message;
    SmfMessage message;
    auto& fields = message.fields;
    fields.push_back({"From", Address(account_.user)});
    // There is no message without somebody in To.
    fields.push_back({"To", Addresses(to.empty() ? cc : to)});
    if (!to.empty() && !cc.empty()) fields.push_back({"Cc", Addresses(cc)});
    fields.push_back({"Subject", Bytes(source.subject)});
    fields.push_back({"Date", date_});
    const auto importance = request_.instance.importance;
    if (importance != kNormal) {
      fields.push_back({"Importance", importance < kNormal ? "High" : "Low"});
    }
    for (const auto& file : files_.List()) AddFile(outbox, file, fields);
    fields.push_back({"Message-encoding", "IBM-437"});
    message.body = Bytes(OutgoingText(source));
    outbox.AddMessage(WriteSmf(message));
  }

  void AddFile(MhsOutbox& outbox, const Attachment& file, std::vector<SmfField>& fields) const {
    const auto parcel = outbox.AddParcel(file.file);
    const auto name =
        std::string(FileNameOf(file.displayName.empty() ? file.file : file.displayName));
    fields.push_back({"Attachment", parcel.name});
    fields.push_back({"Attachment-name", Bytes(name)});
    if (parcel.written) fields.push_back({"Attachment-date", DateText(*parcel.written)});
  }

  std::string Addresses(const Recipients& recipients) const {
    std::string field;
    for (const auto& recipient : recipients) {
      if (!field.empty()) field += ", ";
      field += Address(recipient);
    }
    return field;
  }

  // A name without a workgroup is one of the sender's own.
  std::string Address(const std::string& recipient) const {
    auto [name, address] = SplitRecipient(recipient);
    if (address.empty()) address.swap(name);
    if (address.starts_with('<') && address.ends_with('>')) {
      address = address.substr(1, address.size() - 2);
    }
    if (address.find('@') == std::string::npos && !account_.workgroup.empty()) {
      address += "@" + account_.workgroup;
    }
    address = Bytes(address);
    if (!IsSmfAddress(address)) {
      throw MhsFailure("Error sending mail to " + recipient, mhs::kBadAddress);
    }
    return FormatSmfAddress({Bytes(name), address});
  }

  const MhsDraftPorts& ports_;
  const MailRequest& request_;
  const MhsAccount& account_;
  const std::string date_;
  const OutgoingFiles files_;
};

}  // namespace

void SendMhsMessage(const MhsDraftPorts& ports, const MailRequest& request,
                    const MhsAccount& account) {
  Draft(ports, request, account).Send();
}

}  // namespace quillon
