#include "bench/support/ReceivedMail.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <span>

#include "codec/Base64.h"

namespace quillon::bench {

namespace {

constexpr std::size_t kPool = std::size_t{1} << 20;
constexpr std::size_t kLine = 76;
constexpr std::size_t kBase64Line = 57;

constexpr std::array<std::string_view, 16> kWords{
    "the", "report", "of",    "March",  "is",   "done",   "and",   "waits",
    "for", "your",   "reply", "before", "next", "Monday", "which", "comes."};
constexpr std::array<std::string_view, 5> kLatin{"\xFC\x62\x65r", "sch\xF6n", "Stra\xDF\x65",
                                                 "se\xF1or", "\xE5r"};
constexpr std::array<std::string_view, 5> kQuoted{"=C3=BCber", "sch=C3=B6n", "Stra=C3=9Fe", "a=3Db",
                                                  "=E2=82=AC"};
constexpr std::array<std::string_view, 5> kTags{"<p>", "</p>", "<br>", "<td class=3D\"c\">",
                                                "<b style=3D\"color:#222\">"};

// Lines of words, some of them taken from `others`; with `softEnds` three lines of four end in "=".
std::string WordLines(std::mt19937_64& random, std::span<const std::string_view> others,
                      bool softEnds) {
  std::string pool;
  std::string line;
  while (pool.size() < kPool) {
    const auto draw = random();
    const auto word = !others.empty() && draw % 8 == 0 ? others[(draw >> 8) % others.size()]
                                                       : kWords[(draw >> 8) % kWords.size()];
    if (line.size() + word.size() + 2 > kLine) {
      pool += line;
      pool += softEnds && draw % 4 != 0 ? " =\r\n" : "\r\n";
      line.clear();
    } else if (!line.empty()) {
      line += ' ';
    }
    line += word;
  }
  return pool;
}

std::string Base64Of(std::span<const std::uint8_t> bytes) {
  std::string text(Base64EncodedSize(bytes.size()), '\0');
  EncodeBase64Lines(bytes, reinterpret_cast<std::uint8_t*>(text.data()));
  return text;
}

std::string Base64Lines(std::mt19937_64& random, std::size_t size) {
  std::vector<std::uint8_t> bytes(size / (kLine + 2) * kBase64Line);
  for (std::size_t at = 0; at + 8 <= bytes.size(); at += 8) {
    const std::uint64_t word = random();
    std::memcpy(bytes.data() + at, &word, sizeof word);
  }
  return Base64Of(bytes);
}

// UTF-8. Each line of base64 is one of the text, so that any of them can be the first.
std::string Base64Text(std::mt19937_64& random) {
  std::string text;
  while (text.size() < kPool / (kLine + 2) * kBase64Line) {
    std::string line = "Stra\xC3\x9F\x65";
    while (line.size() < kBase64Line) line.append(" ").append(kWords[random() % kWords.size()]);
    text += line.substr(0, kBase64Line - 2) + "\r\n";
  }
  return Base64Of({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

void Repeat(std::string_view pool, std::size_t size, const Put& put) {
  for (; size > pool.size(); size -= pool.size()) put(pool);
  put(pool.substr(0, pool.find('\n', size - 1) + 1));
}

}  // namespace

void MakeLargeMessage(std::size_t size, std::size_t text, const Put& put) {
  // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): always the same message is wanted.
  std::mt19937_64 random(1);
  const auto words = WordLines(random, {}, false);
  const auto base64 = Base64Lines(random, kPool);
  put("From: Joe <joe@example.com>\r\nSubject: Twelve files\r\nMIME-Version: 1.0\r\n"
      "Content-Type: multipart/mixed; boundary=\"=_large\"\r\n\r\n"
      "--=_large\r\nContent-Type: text/plain\r\n\r\n");
  Repeat(words, text, put);
  for (std::size_t i = 0; i < kLargeMessageFiles; ++i) {
    put("--=_large\r\nContent-Type: application/octet-stream\r\nContent-Transfer-Encoding: "
        "base64\r\nContent-Disposition: attachment; filename=\"data" +
        std::to_string(i) + ".bin\"\r\n\r\n");
    Repeat(base64, (size - text) / kLargeMessageFiles, put);
  }
  put("--=_large--\r\n");
}

void MakeLargeText(std::size_t size, const Put& put) {
  // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): always the same message is wanted.
  std::mt19937_64 random(1);
  put("Subject: Text\r\nMIME-Version: 1.0\r\nContent-Type: text/plain; charset=utf-8\r\n"
      "Content-Transfer-Encoding: quoted-printable\r\n\r\n");
  Repeat(WordLines(random, kQuoted, true), size, put);
}

OrdinaryMail::OrdinaryMail()
    : text_(WordLines(random_, {}, false)),
      latin_(WordLines(random_, kLatin, false)),
      quoted_(WordLines(random_, kQuoted, true)),
      html_(WordLines(random_, kTags, true)),
      base64_(Base64Lines(random_, kPool)),
      base64Text_(Base64Text(random_)) {}

std::size_t OrdinaryMail::Between(std::size_t least, std::size_t most) {
  return least + random_() % (most - least + 1);
}

std::string OrdinaryMail::Lines(const std::string& pool, std::size_t least, std::size_t most) {
  const auto size = Between(least, most) * kLine;
  const auto start = pool.find('\n', Between(0, pool.size() - size - 3 * kLine)) + 1;
  return pool.substr(start, pool.find('\n', start + size) + 1 - start);
}

std::string OrdinaryMail::FileName(const char* extension) {
  return "file" + std::to_string(number_) + "-" + std::to_string(random_() % 100000) + "." +
         extension;
}

// The fields that ordinary mail arrives with.
std::string OrdinaryMail::Header() {
  const auto number = std::to_string(number_);
  std::string header = "Return-Path: <joe@example.com>\r\n";
  for (const auto* host : {"mx.example.net", "relay.example.org", "out.example.com"}) {
    header += "Received: from " + std::string(host) + " (" + host +
              " [192.0.2.7])\r\n\tby mail.example.net with ESMTPS id A" + number +
              "\r\n\tfor <ann@example.net>; Tue, 3 Mar 2026 10:11:12 +0100\r\n";
  }
  header +=
      "DKIM-Signature: v=1; a=rsa-sha256; c=relaxed/relaxed; d=example.com; s=mail;\r\n\t"
      "h=from:to:subject:date:message-id; bh=" +
      base64_.substr(78, 44) + ";\r\n\tb=" + base64_.substr(156, 70) + "\r\n\t " +
      base64_.substr(234, 70) + "\r\n";
  header += "Date: Tue, 3 Mar 2026 10:11:12 +0100\r\nMessage-ID: <" + number +
            ".abc@example.com>\r\nFrom: =?utf-8?Q?Joe_M=C3=BCller?= <joe@example.com>\r\n"
            "To: Ann Smith <ann@example.net>,\r\n Office <office@example.net>\r\n"
            "Cc: \"Bill, the other\" <bill@example.net>\r\nSubject: "
            "=?utf-8?Q?Report_of_M=C3=A4rz=2C?= number " +
            number + "\r\nIn-Reply-To: <before." + number + "@example.com>\r\nReferences: <first." +
            number + "@example.com>\r\n\t<before." + number +
            "@example.com>\r\nX-Mailer: Mailer 4.2\r\nMIME-Version: 1.0\r\n";
  return header;
}

OrdinaryMail::Part OrdinaryMail::Plain() {
  switch (random_() % 3) {
    case 0:
      return {"Content-Type: text/plain; charset=us-ascii\r\n", Lines(text_, 5, 60)};
    case 1:
      return {
          "Content-Type: text/plain; charset=\"iso-8859-1\"\r\nContent-Transfer-Encoding: "
          "8bit\r\n",
          Lines(latin_, 5, 60)};
    default:
      return {"Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: base64\r\n",
              Lines(base64Text_, 5, 60)};
  }
}

OrdinaryMail::Part OrdinaryMail::QuotedPrintable() {
  return {
      "Content-Type: text/plain; charset=\"utf-8\"\r\nContent-Transfer-Encoding: "
      "quoted-printable\r\n",
      Lines(quoted_, 5, 60)};
}

OrdinaryMail::Part OrdinaryMail::Html() {
  return {
      "Content-Type: text/html; charset=\"utf-8\"\r\nContent-Transfer-Encoding: "
      "quoted-printable\r\n",
      Lines(html_, 20, 150)};
}

OrdinaryMail::Part OrdinaryMail::File(const char* type, const char* extension, std::size_t least,
                                      std::size_t most) {
  const auto name = FileName(extension);
  return {"Content-Type: " + std::string(type) + ";\r\n name=\"" + name +
              "\"\r\nContent-Transfer-Encoding: base64\r\nContent-Disposition: attachment;\r\n "
              "filename=\"" +
              name + "\"\r\n",
          Lines(base64_, least, most)};
}

OrdinaryMail::Part OrdinaryMail::Multipart(const char* subtype, const std::vector<Part>& parts) {
  const auto boundary = "----=_Part_" + std::to_string(number_) + "_" + std::to_string(random_());
  Part whole{
      "Content-Type: multipart/" + std::string(subtype) + ";\r\n boundary=\"" + boundary + "\"\r\n",
      "This is a message in MIME format.\r\n\r\n"};
  for (const auto& part : parts) {
    whole.content += "--" + boundary + "\r\n" + part.header + "\r\n" + part.content + "\r\n";
  }
  whole.content += "--" + boundary + "--\r\n";
  return whole;
}

OrdinaryMail::Part OrdinaryMail::Alternative() {
  return Multipart("alternative", {QuotedPrintable(), Html()});
}

OrdinaryMail::Part OrdinaryMail::WithFile() {
  return Multipart("mixed", {Alternative(), File("application/pdf", "pdf", 100, 700)});
}

OrdinaryMail::Part OrdinaryMail::WithPictures() {
  return Multipart("alternative",
                   {Plain(), Multipart("related", {Html(), File("image/png", "png", 50, 200),
                                                   File("image/jpeg", "jpg", 50, 300)})});
}

OrdinaryMail::Part OrdinaryMail::Report() {
  const Part status{"Content-Type: message/delivery-status; name=\"status.txt\"\r\n",
                    "Reporting-MTA: dns; mx.example.net\r\n\r\nFinal-Recipient: rfc822; "
                    "nobody@example.net\r\nAction: failed\r\nStatus: 5.1.1\r\n"};
  return Multipart(
      "report; report-type=delivery-status",
      {Plain(), status, {"Content-Type: message/rfc822\r\n", Message(QuotedPrintable())}});
}

OrdinaryMail::Part OrdinaryMail::Digest() {
  std::vector<Part> messages;
  messages.reserve(3);
  for (int i = 0; i < 3; ++i) messages.push_back({"", Message(Plain())});
  return Multipart("mixed", {Plain(), Multipart("digest", messages)});
}

std::string OrdinaryMail::Message(const Part& part) {
  return Header() + part.header + "\r\n" + part.content;
}

std::string OrdinaryMail::Next() {
  ++number_;
  const auto draw = random_() % 100;
  if (draw < 30) return Message(Plain());
  if (draw < 45) return Message(QuotedPrintable());
  if (draw < 48) return Message(Html());
  if (draw < 70) return Message(Alternative());
  if (draw < 85) return Message(WithFile());
  if (draw < 94) return Message(WithPictures());
  if (draw < 98) return Message(Report());
  return Message(Digest());
}

}  // namespace quillon::bench
