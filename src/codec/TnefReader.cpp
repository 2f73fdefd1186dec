#include "codec/TnefReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>

#include "codec/TextReader.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::uint32_t kFileSignature = 0x223E9F78;
constexpr std::size_t kMostNameBytes = 600;

// The low half of the number of an attribute; the other one is the type of its value.
namespace attribute {
constexpr std::uint16_t kMessageClass = 0x8008;
constexpr std::uint16_t kOemCodePage = 0x9007;
constexpr std::uint16_t kBody = 0x800C;
constexpr std::uint16_t kMessageProperties = 0x9003;
constexpr std::uint16_t kAttachRenderData = 0x9002;  // the first one of each attachment
constexpr std::uint16_t kAttachTitle = 0x8010;
constexpr std::uint16_t kAttachData = 0x800F;
constexpr std::uint16_t kAttachTransportName = 0x9001;
constexpr std::uint16_t kAttachProperties = 0x9005;
}  // namespace attribute

// Properties of MAPI, and the types of their values.
namespace property {
constexpr std::uint16_t kMessageClass = 0x001A;
constexpr std::uint16_t kBody = 0x1000;
constexpr std::uint16_t kRichText = 0x1009;
constexpr std::uint16_t kHtml = 0x1013;
constexpr std::uint16_t kDisplayName = 0x3001;
constexpr std::uint16_t kAttachData = 0x3701;
constexpr std::uint16_t kAttachFileName = 0x3704;
constexpr std::uint16_t kAttachLongFileName = 0x3707;
constexpr std::uint16_t kInternetCodePage = 0x3FDE;
constexpr std::uint16_t kFirstNamed = 0x8000;
}  // namespace property

namespace value_type {
constexpr std::uint16_t kObject = 0x000D;
constexpr std::uint16_t kText = 0x001E;
constexpr std::uint16_t kUnicode = 0x001F;
constexpr std::uint16_t kBinary = 0x0102;
constexpr std::uint16_t kIsMany = 0x1000;
}  // namespace value_type

// {00020307-0000-0000-C000-000000000046}: an object is a message.
constexpr std::string_view kMessageInterface("\x07\x03\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 16);

// 0 for a type that nobody knows, and for those that say their size themselves.
std::uint64_t SizeOfType(std::uint16_t type) {
  switch (type) {
    case 0x0002:  // a short
    case 0x0003:  // a long
    case 0x0004:  // a float
    case 0x000A:  // an error
    case 0x000B:  // a flag
      return 4;
    case 0x0005:  // a double
    case 0x0006:  // currency
    case 0x0007:  // a time of applications
    case 0x0014:  // 64 bits
    case 0x0040:  // a time of the system
      return 8;
    case 0x0048:  // an identifier
      return 16;
    default:
      return 0;
  }
}

bool SaysItsSize(std::uint16_t type) {
  return type == value_type::kObject || type == value_type::kText || type == value_type::kUnicode ||
         type == value_type::kBinary;
}

// A value that says its size, with what fills it up to four bytes.
FileBytes TakeSized(FileBytes& bytes) {
  const std::uint64_t size = bytes.Number32();
  auto value = bytes.Take(size);
  bytes.Skip(std::min((4 - size % 4) % 4, bytes.Left()));
  return value;
}

struct MapiProperty {
  std::uint16_t id = 0;
  std::uint16_t type = 0;
  FileBytes value;  // the last one of several
};

std::optional<MapiProperty> TakeProperty(FileBytes& bytes) {
  constexpr std::uint64_t kIdentifierSize = 16;
  const auto type = bytes.Number16();
  const auto id = bytes.Number16();
  if (id >= property::kFirstNamed) {
    bytes.Skip(kIdentifierSize);
    if (bytes.Number32() == 0) {
      bytes.Skip(4);
    } else {
      TakeSized(bytes);
    }
  }
  const auto single = static_cast<std::uint16_t>(type & ~value_type::kIsMany);
  MapiProperty found{id, single, bytes};
  if (SaysItsSize(single)) {
    for (auto count = bytes.Number32(); count > 0 && !bytes.Failed(); --count) {
      found.value = TakeSized(bytes);
    }
  } else {
    const auto size = SizeOfType(single);
    const std::uint64_t count = single == type ? 1 : bytes.Number32();
    if (size == 0) return std::nullopt;
    found.value = bytes.Take(size * count);
  }
  if (bytes.Failed()) return std::nullopt;
  return found;
}

// False when there are fewer than the bytes say, or one that cannot be read.
bool ReadProperties(FileBytes bytes, const std::function<void(const MapiProperty&)>& take) {
  for (auto count = bytes.Number32(); count > 0; --count) {
    const auto found = TakeProperty(bytes);
    if (!found) return false;
    if (found->id < property::kFirstNamed) take(*found);
  }
  return !bytes.Failed();
}

class AttributeSum final : public ByteSink {
 public:
  void Append(std::string_view bytes) override {
    for (const char c : bytes) value_ += static_cast<unsigned char>(c);
  }
  std::uint16_t Value() const { return static_cast<std::uint16_t>(value_); }

 private:
  std::uint32_t value_ = 0;
};

bool IsNote(std::string_view messageClass) {
  return messageClass.empty() || EqualsIgnoreCase(messageClass.substr(0, 8), "IPM.Note") ||
         EqualsIgnoreCase(messageClass, "IPM.Microsoft Mail.Note");
}

// The names of an attachment, the better ones first.
enum NameKind : std::size_t { kLongFile, kTransport, kFile, kTitle, kDisplay, kNameKinds };

struct OpenAttachment {
  std::array<std::string, kNameKinds> names;
  std::optional<FileBytes> data = {};
  std::optional<FileBytes> object = {};  // which goes before the data
  bool isMessage = false;
};

class TnefParser {
 public:
  explicit TnefParser(const TextReader& reader) : reader_(reader) {}

  TnefMessage Read(FileBytes bytes) {
    while (bytes.Left() > 0) {
      const auto level = bytes.Byte();
      const auto id = static_cast<std::uint16_t>(bytes.Number32());
      const auto data = bytes.Take(bytes.Number32());
      const auto sum = bytes.Number16();
      if (bytes.Failed() || level < 1 || level > 2) {
        message_.isWhole = false;
        break;
      }
      AttributeSum counted;
      FileBytes(data).CopyTo(counted);
      if (counted.Value() != sum) message_.isWhole = false;
      TakeAttribute(id, data);
    }
    EndAttachment();
    return std::move(message_);
  }

 private:
  void TakeAttribute(std::uint16_t id, FileBytes data) {
    switch (id) {
      case attribute::kOemCodePage:
        message_.codePage = static_cast<int>(data.Number32() & 0xFFFFU);
        break;
      case attribute::kMessageClass:
        TakeClass(TextOf(data, value_type::kText));
        break;
      case attribute::kBody:
        if (!message_.text) message_.text = data;
        break;
      case attribute::kMessageProperties:
        TakeProperties(data, [this](const MapiProperty& found) { TakeOfMessage(found); });
        break;
      case attribute::kAttachRenderData:
        EndAttachment();
        attachment_.emplace();
        break;
      case attribute::kAttachTitle:
        Current().names[kTitle] = TextOf(data, value_type::kText);
        break;
      case attribute::kAttachTransportName:
        Current().names[kTransport] = TextOf(data, value_type::kText);
        break;
      case attribute::kAttachData:
        Current().data = data;
        break;
      case attribute::kAttachProperties:
        TakeProperties(data, [this](const MapiProperty& found) { TakeOfAttachment(found); });
        break;
      default:
        break;
    }
  }

  void TakeProperties(FileBytes data, const std::function<void(const MapiProperty&)>& take) {
    if (!ReadProperties(data, take)) message_.isWhole = false;
  }

  void TakeClass(std::string_view name) {
    if (!IsNote(name)) message_.isWhole = false;
  }

  void TakeOfMessage(const MapiProperty& found) {
    auto value = found.value;
    if (found.id == property::kMessageClass) TakeClass(TextOf(value, found.type));
    if (found.id == property::kInternetCodePage) {
      message_.htmlCodePage = static_cast<int>(value.Number32() & 0xFFFFU);
    }
    if (found.id == property::kBody) {
      (found.type == value_type::kUnicode ? message_.unicodeText : message_.text) = value;
    }
    if (found.id == property::kRichText) message_.richText = value;
    if (found.id == property::kHtml) message_.html = value;
  }

  void TakeOfAttachment(const MapiProperty& found) {
    if (found.id == property::kAttachData) TakeData(found);
    if (found.id == property::kDisplayName) SetName(kDisplay, found);
    if (found.id == property::kAttachFileName) SetName(kFile, found);
    if (found.id == property::kAttachLongFileName) SetName(kLongFile, found);
  }

  // An object has the identifier of its interface in front.
  void TakeData(const MapiProperty& found) {
    auto value = found.value;
    auto& attachment = Current();
    if (found.type != value_type::kObject) {
      attachment.data = value;
      return;
    }
    attachment.isMessage = value.Text(kMessageInterface.size()) == kMessageInterface;
    attachment.object = value;
  }

  void SetName(NameKind name, const MapiProperty& found) {
    Current().names[name] = TextOf(found.value, found.type);
  }

  // Up to the NUL at its end.
  std::string TextOf(FileBytes bytes, std::uint16_t type) const {
    const auto set =
        type == value_type::kUnicode ? std::string("utf-16le") : NameOfCodePage(message_.codePage);
    auto text = reader_.Named(bytes.Text(kMostNameBytes), set);
    return text.substr(0, text.find('\0'));
  }

  OpenAttachment& Current() {
    if (!attachment_) attachment_.emplace();
    return *attachment_;
  }

  void EndAttachment() {
    if (!attachment_) return;
    TnefAttachment ended;
    for (auto& name : attachment_->names) {
      if (ended.name.empty()) ended.name = std::move(name);
    }
    ended.data = attachment_->object ? attachment_->object : attachment_->data;
    ended.isMessage = attachment_->isMessage;
    attachment_.reset();
    const bool fits = message_.attachments.size() < TnefMessage::kMaximumAttachments;
    if (!fits || !ended.data) message_.isWhole = false;
    if (fits && ended.data) message_.attachments.push_back(std::move(ended));
  }

  const TextReader& reader_;
  TnefMessage message_;
  std::optional<OpenAttachment> attachment_;
};

}  // namespace

std::optional<TnefMessage> ReadTnef(FileBytes bytes, const TextReader& reader) {
  if (bytes.Number32() != kFileSignature) return std::nullopt;
  bytes.Number16();  // a key, by which a transport could find its message again
  if (bytes.Failed()) return std::nullopt;
  return TnefParser(reader).Read(bytes);
}

std::string NameOfCodePage(int codePage) {
  return codePage == 0 ? std::string() : "cp" + std::to_string(codePage);
}

}  // namespace quillon
