#include "Blocks.h"

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

#include "desk/win32/AnsiText.h"

namespace deskmapi {

using desk::AnsiFrom;

struct Blocks::Block {
  MailRecord<char> mail{};
  std::vector<PartyRecord<char>> parties;  // the originator, if there is one, first
  std::vector<FileRecord<char>> files;
  std::deque<std::string> texts;  // which stay where they are

  const char* Keep(std::string bytes) { return texts.emplace_back(std::move(bytes)).c_str(); }

  PartyRecord<char> Record(const desk::Party& party) {
    const std::string id = AnsiFrom(party.entryId);
    return {0,
            party.kind,
            Keep(AnsiFrom(party.name)),
            Keep(AnsiFrom(party.address)),
            static_cast<std::uint32_t>(id.size()),
            id.empty() ? nullptr : Keep(id)};
  }
};

Blocks::Blocks() = default;
Blocks::~Blocks() = default;

const MailRecord<char>* Blocks::HandOut(const desk::Mail& mail) {
  auto block = std::make_unique<Block>();
  block->parties.push_back(block->Record(mail.originator));
  for (const desk::Party& party : mail.recipients) block->parties.push_back(block->Record(party));
  for (const desk::MailFile& file : mail.files) {
    block->files.push_back({0, 0, file.position,
                            block->Keep(AnsiFrom(desk::Utf8FromPath(file.path))),
                            block->Keep(AnsiFrom(file.name)), nullptr});
  }
  MailRecord<char>& record = block->mail;
  record.subject = block->Keep(AnsiFrom(mail.subject));
  record.text = block->Keep(AnsiFrom(mail.text));
  record.type = block->Keep(AnsiFrom(mail.type));
  record.date = block->Keep(AnsiFrom(mail.date));
  record.conversation = block->Keep(AnsiFrom(mail.conversation));
  record.flags = mail.flags;
  record.originator = block->parties.data();
  record.recipientCount = static_cast<std::uint32_t>(mail.recipients.size());
  record.recipients = mail.recipients.empty() ? nullptr : block->parties.data() + 1;
  record.fileCount = static_cast<std::uint32_t>(mail.files.size());
  record.files = mail.files.empty() ? nullptr : block->files.data();
  const std::lock_guard lock(mutex_);
  blocks_[&record] = std::move(block);
  return &record;
}

const PartyRecord<char>* Blocks::HandOut(const std::vector<desk::Party>& parties) {
  if (parties.empty()) return nullptr;
  auto block = std::make_unique<Block>();
  for (const desk::Party& party : parties) block->parties.push_back(block->Record(party));
  const PartyRecord<char>* const record = block->parties.data();
  const std::lock_guard lock(mutex_);
  blocks_[record] = std::move(block);
  return record;
}

// The texts are spoilt, so that a client which reads what it has freed notices.
bool Blocks::Free(const void* record) {
  const std::lock_guard lock(mutex_);
  const auto found = blocks_.find(record);
  if (found == blocks_.end()) return false;
  for (std::string& text : found->second->texts) std::fill(text.begin(), text.end(), '#');
  blocks_.erase(found);
  return true;
}

std::size_t Blocks::Count() const {
  const std::lock_guard lock(mutex_);
  return blocks_.size();
}

}  // namespace deskmapi
