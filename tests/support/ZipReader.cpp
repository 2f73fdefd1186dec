#include "support/ZipReader.h"

#include <array>
#include <stdexcept>
#include <zlib.h>

namespace quillon::testing {
namespace {

constexpr size_t kEncryptionHeader = 12;

void Require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(what);
}

// Little-endian fields of a record.
class Fields {
 public:
  explicit Fields(std::string_view bytes) : bytes_(bytes) {}

  std::string_view Text(size_t size) {
    Require(size <= bytes_.size(), "the archive is cut off");
    const std::string_view text = bytes_.substr(0, size);
    bytes_.remove_prefix(size);
    return text;
  }
  uint16_t Two() { return static_cast<uint16_t>(Number(2)); }
  uint32_t Four() { return Number(4); }
  void Signature(uint32_t expected) { Require(Four() == expected, "a wrong signature"); }
  size_t Left() const { return bytes_.size(); }

 private:
  uint32_t Number(int size) {
    uint32_t value = 0;
    const std::string_view bytes = Text(static_cast<size_t>(size));
    for (int i = size - 1; i >= 0; --i) {
      value = (value << 8) | static_cast<uint8_t>(bytes[static_cast<size_t>(i)]);
    }
    return value;
  }

  std::string_view bytes_;
};

struct Sizes {
  uint32_t crc;
  uint32_t packed;
  uint32_t size;
  bool operator==(const Sizes&) const = default;
};

Sizes ReadSizes(Fields& fields) {
  const uint32_t crc = fields.Four();
  const uint32_t packed = fields.Four();
  return {crc, packed, fields.Four()};
}

uint32_t CrcStep(uint32_t crc, uint32_t byte) {
  return get_crc_table()[(crc ^ byte) & 0xFF] ^ (crc >> 8);
}

std::string Decrypted(std::string_view bytes, std::string_view password, uint8_t checkByte) {
  std::array<uint32_t, 3> keys{305419896, 591751049, 878082192};
  const auto update = [&keys](char plain) {
    keys[0] = CrcStep(keys[0], static_cast<uint8_t>(plain));
    keys[1] = (keys[1] + (keys[0] % 256)) * 134775813 + 1;
    keys[2] = CrcStep(keys[2], keys[1] >> 24);
  };
  for (const char c : password) update(c);
  std::string plain;
  for (const char c : bytes) {
    const uint32_t temp = (keys[2] | 2) % 65536;
    plain += static_cast<char>(static_cast<uint8_t>(c) ^ ((temp * (temp ^ 1) / 256) % 256));
    update(plain.back());
  }
  Require(plain.size() >= kEncryptionHeader, "no encryption header");
  Require(static_cast<uint8_t>(plain[kEncryptionHeader - 1]) == checkByte, "a wrong password");
  return plain.substr(kEncryptionHeader);
}

std::string Inflated(std::string packed, size_t size) {
  std::string content(size + 1, '\0');
  z_stream stream{};
  Require(inflateInit2(&stream, -MAX_WBITS) == Z_OK, "no memory");
  stream.next_in = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_in = static_cast<uInt>(packed.size());
  stream.next_out = reinterpret_cast<Bytef*>(content.data());
  stream.avail_out = static_cast<uInt>(content.size());
  const int status = inflate(&stream, Z_FINISH);
  const size_t unread = stream.avail_in;
  content.resize(content.size() - stream.avail_out);
  inflateEnd(&stream);
  Require(status == Z_STREAM_END && unread == 0, "damaged data");
  return content;
}

// One entry: its record in the directory, then its place in the archive, where `next` is the place
// behind the entry before.
ZippedFile ReadEntry(Fields& directory, std::string_view archive, std::string_view password,
                     size_t& next) {
  ZippedFile file;
  directory.Signature(0x02014B50);
  directory.Two();
  const uint16_t needed = directory.Two();
  file.flags = directory.Two();
  file.method = directory.Two();
  file.time = directory.Two();
  file.date = directory.Two();
  const Sizes sizes = ReadSizes(directory);
  const uint16_t nameSize = directory.Two();
  Require(directory.Two() == 0 && directory.Two() == 0, "an extra field or a comment");
  directory.Text(8);  // disk, attributes
  Require(directory.Four() == next, "entries with a gap between them");
  file.name = directory.Text(nameSize);

  Fields local(archive.substr(next));
  const bool described = (file.flags & 8) != 0;
  local.Signature(0x04034B50);
  Require(local.Two() == needed && local.Two() == file.flags && local.Two() == file.method &&
              local.Two() == file.time && local.Two() == file.date &&
              ReadSizes(local) == (described ? Sizes{0, 0, 0} : sizes) && local.Two() == nameSize &&
              local.Two() == 0 && local.Text(nameSize) == file.name,
          "the two headers contradict each other");
  std::string data(local.Text(sizes.packed));
  if (described) {
    local.Signature(0x08074B50);
    Require(ReadSizes(local) == sizes, "the descriptor contradicts the directory");
  }
  next = archive.size() - local.Left();

  if ((file.flags & 1) != 0) {
    data = Decrypted(data, password,
                     static_cast<uint8_t>(described ? file.time >> 8 : sizes.crc >> 24));
  }
  file.content = file.method == 0 ? data : Inflated(std::move(data), sizes.size);
  Require(file.content.size() == sizes.size, "a wrong size");
  Require(crc32(0, reinterpret_cast<const Bytef*>(file.content.data()), sizes.size) == sizes.crc,
          "a wrong check sum");
  return file;
}

}  // namespace

std::vector<ZippedFile> ReadZip(std::string_view archive, std::string_view password) {
  constexpr size_t kEndSize = 22;
  Require(archive.size() >= kEndSize, "no end");
  Fields end(archive.substr(archive.size() - kEndSize));
  end.Signature(0x06054B50);
  Require(end.Four() == 0, "several disks");
  const uint16_t count = end.Two();
  Require(end.Two() == count, "several disks");
  const uint32_t size = end.Four();
  const uint32_t offset = end.Four();
  Require(end.Two() == 0, "a comment");
  Require(uint64_t{offset} + size + kEndSize == archive.size(), "a gap around the directory");
  Fields directory(archive.substr(offset, size));
  std::vector<ZippedFile> files;
  size_t next = 0;
  for (uint16_t i = 0; i < count; ++i) {
    files.push_back(ReadEntry(directory, archive, password, next));
  }
  Require(directory.Left() == 0 && next == offset, "bytes that belong to no entry");
  return files;
}

}  // namespace quillon::testing
