// A message that is ready to be sent: pieces in memory and encoded files, in their order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "internet/MessageData.h"
#include "mail/TemporaryFolder.h"
#include "ports/FileSystem.h"

namespace quillon {

// Some lines, and what follows them.
struct MessagePiece {
  enum class Content { None, Text, Base64File, UuFile };

  MessageData::Section section = MessageData::Section::Text;
  std::string lines;
  Content content = Content::None;
  std::string path = {};  // of the file
  std::string text = {};
};

class ComposedMessage final : public MessageData {
 public:
  // The text of the message leaves in pieces of `blockSize` bytes; 0: in any.
  ComposedMessage(FileSystem& files, std::size_t blockSize,
                  std::unique_ptr<TemporaryFolder> folder);

  // Before the first Fill, and one at least.
  void Add(MessagePiece piece);

  Section Current() const override { return pieces_[at_].section; }
  State Fill(std::string& block, std::size_t wanted) override;
  std::uint64_t Size() const override { return size_; }
  void Rewind() override;
  bool IsEightBit() const override;

 private:
  State FillPiece(std::string& block, std::size_t wanted);
  std::unique_ptr<DataSource> Open(const MessagePiece& piece) const;
  bool IsLimited() const;

  FileSystem& files_;
  std::size_t blockSize_;
  std::unique_ptr<TemporaryFolder> folder_;  // outlives the file that is open
  std::vector<MessagePiece> pieces_;
  std::uint64_t size_ = 0;  // of all pieces
  std::size_t at_ = 0;
  bool begun_ = false;                   // the current piece's lines are out
  std::unique_ptr<DataSource> content_;  // of the current piece, once its lines are out
};

}  // namespace quillon
