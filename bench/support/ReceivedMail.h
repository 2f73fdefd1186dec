// Messages as they are received, generated: always the same ones.
#pragma once

#include <cstddef>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace quillon::bench {

using Put = std::function<void(std::string_view)>;

inline constexpr std::size_t kLargeMessageFiles = 12;

// A message given in pieces: about so many bytes of text, the rest attachments in base64.
void MakeLargeMessage(std::size_t size, std::size_t text, const Put& put);

// One that is text alone, in UTF-8 and quoted-printable.
void MakeLargeText(std::size_t size, const Put& put);

// Ordinary messages of mixed shapes: plain text in every encoding, alternatives, attachments,
// pictures that belong to the text, reports and digests.
class OrdinaryMail {
 public:
  OrdinaryMail();

  std::string Next();

 private:
  struct Part {
    std::string header;  // Content-Type and what else there is, without the empty line
    std::string content;
  };

  std::size_t Between(std::size_t least, std::size_t most);
  // So many lines of a pool, from anywhere in it.
  std::string Lines(const std::string& pool, std::size_t least, std::size_t most);
  std::string FileName(const char* extension);

  std::string Header();
  Part Plain();
  Part QuotedPrintable();
  Part Html();
  Part File(const char* type, const char* extension, std::size_t least, std::size_t most);
  Part Multipart(const char* subtype, const std::vector<Part>& parts);
  Part Alternative();
  Part WithFile();
  Part WithPictures();
  Part Report();
  Part Digest();
  std::string Message(const Part& part);

  // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): always the same messages are wanted.
  std::mt19937_64 random_{1};
  std::size_t number_ = 0;
  std::string text_;
  std::string latin_;  // 8 bits
  std::string quoted_;
  std::string html_;  // quoted-printable
  std::string base64_;
  std::string base64Text_;
};

}  // namespace quillon::bench
