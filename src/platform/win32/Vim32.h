// VIM through the functions of VIM32.DLL.
//
// What of the interface is not published, and is chosen here: enumerations ask for one entry a
// call where they give attributes, and skip 1; flags are vimBool, priorities vimWord; the
// attributes RECIPIENT and ADDRESS are the records vimRecipient and vimAddress, DATE is a vimDate,
// the TYPE of an entry is a selector, all others are texts.
#pragma once

#include "platform/win32/ForeignLibrary.h"
#include "platform/win32/VimRecords.h"
#include "ports/CodePage.h"
#include "ports/Vim.h"

namespace quillon {

class Vim32 final : public Vim {
 public:
  // Texts cross in the code page.
  explicit Vim32(const CodePage& codePage) : codePage_(codePage) {}

  Status Initialize(const std::string& directory) override;
  Status Terminate() override;

  Status GetDefaultSessionInfo(std::string& path, std::string& name) override;
  Status QueryCapability(Selector capability, std::uint32_t& value) override;
  Status OpenSession(const std::optional<VimLogin>& login, Handle& session) override;
  Status CloseSession(Handle session) override;

  Status OpenMessageContainer(Handle session, const std::string& name, Handle& container) override;
  Status CloseMessageContainer(Handle container) override;
  Status EnumerateMessages(Handle container, VimPosition& position, Selector filter,
                           bool unreadOnly, std::vector<VimEnvelope>& messages,
                           bool& more) override;
  Status RemoveMessage(Handle container, VimReference message) override;
  Status MarkMessageAsRead(Handle container, VimReference message) override;
  Status QueryUnreadMailCount(Handle container, std::uint32_t& count) override;
  Status SetMessageCategory(Handle container, VimReference message,
                            const std::string& category) override;
  Status RemoveMessageCategory(Handle container, VimReference message,
                               const std::string& category) override;

  Status OpenMessage(Handle container, VimReference reference, Handle& message) override;
  Status CloseMessage(Handle message) override;
  Status GetMessageHeader(Handle message, VimHeader& header) override;
  Status EnumerateMessageItems(Handle message, VimPosition& position, Selector itemClass,
                               std::vector<VimItem>& items, bool& more) override;
  Status GetMessageItemText(Handle message, const VimItem& item, std::string& text) override;
  Status GetMessageItemFile(Handle message, const VimItem& item, const std::string& file) override;
  Status EnumerateMessageRecipients(Handle message, Selector recipientClass, VimPosition& position,
                                    std::vector<VimRecipient>& recipients, bool& more) override;

  Status CreateMessage(Handle session, const std::string& type, Handle& message) override;
  Status SetMessageRecipient(Handle message, Selector recipientClass,
                             const VimRecipient& recipient) override;
  Status SetMessageHeaderText(Handle message, Selector attribute, const std::string& text) override;
  Status SetMessageHeaderFlag(Handle message, Selector attribute, bool value) override;
  Status SetMessageHeaderNumber(Handle message, Selector attribute, std::uint32_t value) override;
  Status SetMessageItemText(Handle message, const std::string& text) override;
  Status SetMessageItemFile(Handle message, const std::string& name,
                            const std::string& file) override;
  Status SendMessage(Handle message) override;

  Status EnumerateAddressBooks(Handle session, VimPosition& position,
                               std::vector<std::string>& names, bool& more) override;
  Status OpenAddressBook(Handle session, const std::string& name, Handle& book) override;
  Status CloseAddressBook(Handle book) override;
  Status EnumerateAddressBookEntries(Handle book, VimPosition& position,
                                     std::vector<VimEntry>& entries, bool& more) override;
  Status MatchAddressBook(Handle book, const std::string& name, Selector match,
                          VimReference& entry) override;
  Status GetABEntryAttributes(Handle book, VimReference reference, VimEntry& entry) override;

 private:
  template <class... Parameters, class... Arguments>
  Status Call(const char* function, vim_record::Status(WINAPI* type)(Parameters...),
              Arguments... arguments);
  std::string Text(const char* bytes, std::size_t room) const;
  // A path as the library can open it; empty when there is no such form. The file has to exist when
  // its name does not fit into the code page.
  std::string PathBytes(const std::string& path) const;
  Status HeaderText(Handle message, VimHeader& header);
  Status HeaderNumber(Handle message, Selector attribute, std::uint32_t& value);

  const CodePage& codePage_;
  ForeignLibrary library_{L"vim32.dll"};
};

}  // namespace quillon
