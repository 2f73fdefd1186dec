#include "codec/Tnef.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "codec/HeldHtml.h"
#include "codec/PartHeader.h"
#include "codec/RtfCompressed.h"
#include "codec/RtfText.h"
#include "core/Utf8.h"

namespace quillon {

namespace {

constexpr const char* kUtf8Name = "utf-8";
constexpr std::string_view kFileMark = "\xEF\xBB\xBF";

bool IsEmpty(const std::optional<FileBytes>& bytes) {
  return !bytes || bytes->Left() == 0;
}

// False when reading fails.
bool CopyWhole(FileBytes bytes, ByteSink& sink) {
  bytes.CopyTo(sink);
  return !bytes.Failed();
}

// UTF-16, low byte first, as UTF-8, without the NUL at its end.
class Utf16Text final : public ByteSink {
 public:
  explicit Utf16Text(ByteSink& sink) : sink_(sink) {}

  void Append(std::string_view bytes) override {
    for (const char c : bytes) {
      if (!hasLow_) {
        low_ = static_cast<unsigned char>(c);
      } else if (const auto unit =
                     static_cast<unsigned>(static_cast<unsigned char>(c)) << 8U | low_;
                 unit != 0) {
        units_ += static_cast<char16_t>(unit);
      }
      hasLow_ = !hasLow_;
    }
    char16_t half = 0;
    if (!units_.empty() && units_.back() >= 0xD800 && units_.back() < 0xDC00) {
      half = units_.back();
      units_.pop_back();
    }
    sink_.Append(Utf8FromUtf16(units_));
    units_.clear();
    if (half != 0) units_ += half;
  }

 private:
  ByteSink& sink_;
  std::u16string units_;
  unsigned low_ = 0;
  bool hasLow_ = false;
};

// Text in bytes, without the NUL at its end.
class ByteText final : public ByteSink {
 public:
  explicit ByteText(ByteSink& sink) : sink_(sink) {}

  void Append(std::string_view bytes) override {
    while (bytes.ends_with('\0')) bytes.remove_suffix(1);
    sink_.Append(bytes);
  }

 private:
  ByteSink& sink_;
};

// A subject as the name of a file, which would be cut at some of its characters.
std::string NameOfMessage(std::string name) {
  std::replace_if(
      name.begin(), name.end(),
      [](char c) { return std::string_view("/\\:.").find(c) != std::string_view::npos; }, '_');
  return name.empty() ? "NONAME" : name;
}

}  // namespace

bool Tnef::Open(File& file) {
  FileBlocks blocks(file);
  const auto message = ReadTnef(FileBytes(blocks), reader_);
  if (!message) return false;
  bool isWhole = message->isWhole;
  const bool isOfMessage = !body_.HasText();
  if (isOfMessage) {
    const auto begin = [&](const TextForm& form) -> ByteSink& {
      body_.SeparateFromNext();
      body_.Begin(form);
      return body_;
    };
    isWhole = PutText(*message, begin) && isWhole;
  }
  isWhole = PutRenderings(*message, !isOfMessage) && isWhole;
  return PutAttachments(*message, 1) && isWhole;
}

bool Tnef::PutText(const TnefMessage& message, const TextTarget& begin) {
  if (!IsEmpty(message.unicodeText)) {
    Utf16Text text(begin({kUtf8Name}));
    return CopyWhole(*message.unicodeText, text);
  }
  if (!IsEmpty(message.text)) {
    ByteText text(begin({NameOfCodePage(message.codePage)}));
    return CopyWhole(*message.text, text);
  }
  if (!IsEmpty(message.richText)) return PutRichText(message, begin);
  return IsEmpty(message.html) ||
         CopyWhole(*message.html, begin({NameOfCodePage(message.htmlCodePage)}));
}

bool Tnef::PutRichText(const TnefMessage& message, const TextTarget& begin) {
  RtfText text(reader_, begin({kUtf8Name}));
  const bool isWhole = DecompressRtf(*message.richText, text);
  text.Finish();
  return isWhole;
}

// The plain text only where no other rendering has its words.
bool Tnef::PutRenderings(const TnefMessage& message, bool withText) {
  const bool hasHtml = !IsEmpty(message.html);
  bool isWhole = !hasHtml || html_.has_value() || PutHtml(message);
  if (settings_.suppressAlternatives) return isWhole;
  const bool hasRichText = !IsEmpty(message.richText);
  if (withText && !hasHtml && !hasRichText) {
    isWhole = PutTextFile(message, AlternativeName("text/plain")) && isWhole;
  }
  if (hasHtml) isWhole = PutFile(AlternativeName("text/html"), *message.html) && isWhole;
  if (!hasRichText) return isWhole;
  if (list_.IsFull()) return false;
  PartFile file(settings_, AlternativeName("text/rtf"), list_);
  isWhole = DecompressRtf(*message.richText, file) && isWhole;
  file.Close();
  return isWhole;
}

bool Tnef::PutHtml(const TnefMessage& message) {
  HeldHtml held({NameOfCodePage(message.htmlCodePage)}, settings_.maximumBodyBytes, nullptr, false);
  const bool isWhole = CopyWhole(*message.html, held);
  html_ = held.Take(reader_);
  return isWhole;
}

// None for a message without any.
bool Tnef::PutTextFile(const TnefMessage& message, const std::string& name) {
  if (list_.IsFull()) return false;
  std::unique_ptr<PartFile> file;
  const bool isWhole = PutText(message, [&](const TextForm& form) -> ByteSink& {
    file = std::make_unique<PartFile>(settings_, name, list_);
    if (form.characterSet == kUtf8Name) file->Append(kFileMark);
    return *file;
  });
  if (file != nullptr) file->Close();
  return isWhole;
}

bool Tnef::PutAttachments(const TnefMessage& message, std::size_t depth) {
  bool isWhole = true;
  for (const auto& attachment : message.attachments) {
    isWhole = PutAttachment(attachment, depth) && isWhole;
  }
  return isWhole;
}

bool Tnef::PutAttachment(const TnefAttachment& attachment, std::size_t depth) {
  if (!attachment.isMessage) {
    return PutFile(attachment.name.empty() ? "NONAME.DAT" : attachment.name, *attachment.data);
  }
  const auto name = NameOfMessage(attachment.name);
  if (!PutFile(name + ".DAT", *attachment.data)) return false;
  if (depth < kMaximumDepth) OpenInner(attachment, name, depth);
  return true;
}

// What of it cannot be opened is in its file.
void Tnef::OpenInner(const TnefAttachment& attachment, const std::string& name, std::size_t depth) {
  const auto message = ReadTnef(*attachment.data, reader_);
  if (!message) return;
  PutTextFile(*message, name + ".TXT");
  PutAttachments(*message, depth + 1);
}

bool Tnef::PutFile(const std::string& name, FileBytes bytes) {
  if (list_.IsFull()) return false;
  PartFile file(settings_, name, list_);
  const bool isWhole = CopyWhole(bytes, file);
  file.Close();
  return isWhole;
}

}  // namespace quillon
