#include "codec/EncodedWord.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "codec/Base64.h"
#include "codec/TextReader.h"
#include "core/HexDigit.h"
#include "core/RecipientText.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

std::string DecodeQ(std::string text) {
  std::replace(text.begin(), text.end(), '_', ' ');
  return DecodeHexEscapes(text, '=');
}

std::string DecodeB(std::string_view text) {
  std::vector<std::uint8_t> bytes(Base64Decoder::Capacity(text.size()) + 3);
  Base64Decoder decoder;
  auto size = decoder.Decode({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()},
                             bytes.data());
  size += decoder.Finish(bytes.data() + size);
  return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)};
}

struct Word {
  std::string_view charset;
  std::string bytes;
  std::size_t length = 0;  // "=?" and "?=" included
};

bool IsSpecial(char c) {
  return std::string_view("()<>[]:;@\\,\"").find(c) != std::string_view::npos;
}

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '"' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string OnOneLine(std::string_view text) {
  std::string line;
  for (const char c : text) {
    const bool breaks = c == '\r' || c == '\n' || c == '\0';
    if (!breaks) {
      line += c;
    } else if (!line.ends_with(' ')) {
      line += ' ';
    }
  }
  return line;
}

class WordDecoder {
 public:
  WordDecoder(std::string_view value, const TextReader& reader, bool addresses)
      : value_(value), reader_(reader), addresses_(addresses) {}

  std::string Decode() {
    while (at_ < value_.size()) {
      if (const auto word = WordHere()) {
        Take(*word);
      } else {
        const auto next = addresses_ ? BehindAddressOrIntoQuotes() : at_ + 1;
        at_ = std::min(value_.find_first_of(addresses_ ? "=<\"" : "=", next), value_.size());
      }
    }
    Flush(at_);
    return std::move(text_);
  }

 private:
  // Where something stands from a place on; each is searched once, so that a value of many
  // beginnings without an end takes linear time.
  class Ends {
   public:
    template <typename Search>
    std::size_t From(std::size_t at, Search search) {
      if (!known_ || end_ < at) end_ = search(at);
      known_ = true;
      return end_;
    }

   private:
    std::size_t end_ = 0;
    bool known_ = false;
  };

  std::optional<Word> WordHere() {
    const auto rest = value_.substr(at_);
    if (!rest.starts_with("=?")) return std::nullopt;
    const auto charsetEnd = rest.find('?', 2);
    if (charsetEnd == std::string_view::npos || charsetEnd + 2 >= rest.size() ||
        rest[charsetEnd + 2] != '?') {
      return std::nullopt;
    }
    // RFC 2231, section 5: a language may follow the character set.
    auto charset = rest.substr(2, charsetEnd - 2);
    charset = charset.substr(0, charset.find('*'));
    if (charset.find_first_of(kBlanks) != std::string_view::npos) return std::nullopt;
    const auto start = at_ + charsetEnd + 3;
    const auto end =
        wordEnds_.From(start, [this](std::size_t from) { return value_.find("?=", from); });
    if (end == std::string_view::npos) return std::nullopt;
    const auto encoded = value_.substr(start, end - start);
    switch (UpperAscii(rest[charsetEnd + 1])) {
      case 'B':
        return Word{charset, DecodeB(encoded), end + 2 - at_};
      case 'Q':
        return Word{charset, DecodeQ(std::string(encoded)), end + 2 - at_};
      default:
        return std::nullopt;
    }
  }

  void Take(const Word& word) {
    const auto between = value_.substr(plain_, at_ - plain_);
    const bool follows = hasWords_ && between.find_first_not_of(kBlanks) == std::string_view::npos;
    if (!follows) {
      Flush(at_);
    } else if (!EqualsIgnoreCase(charset_, word.charset)) {
      FlushWords();
    }
    charset_ = word.charset;
    bytes_ += word.bytes;
    hasWords_ = true;
    at_ += word.length;
    plain_ = at_;
  }

  // Where to look on. Quotes are what SplitRecipients takes for them.
  std::size_t BehindAddressOrIntoQuotes() {
    const bool quoted = at_ < quotesEnd_;
    auto end = std::string_view::npos;
    if (!quoted && value_[at_] == '<') {
      end = addressEnds_.From(at_, [this](std::size_t from) { return value_.find('>', from); });
    } else if (!quoted && value_[at_] == '"' &&
               (BeginsWord(value_, at_) || value_[at_ - 1] == ',')) {
      end = QuoteEnd(value_, at_ + 1);
      if (end != std::string_view::npos) quotesEnd_ = end + 1;
      return at_ + 1;
    }
    return end == std::string_view::npos ? at_ + 1 : end + 1;
  }

  // What has come before `end`: words, then what is none.
  void Flush(std::size_t end) {
    FlushWords();
    text_ += reader_.Unnamed(value_.substr(plain_, end - plain_));
    plain_ = end;
  }

  void FlushWords() {
    if (!hasWords_) return;
    const auto words = OnOneLine(reader_.Named(std::exchange(bytes_, {}), charset_));
    hasWords_ = false;
    // The quotes that the words stand in end behind them.
    const bool quoted = plain_ < quotesEnd_;
    const bool special = addresses_ && std::any_of(words.begin(), words.end(), IsSpecial);
    if (!special) {
      text_ += words;
    } else if (quoted) {
      text_ += Escaped(words);
    } else {
      if (!text_.empty() && !BeginsWord(text_, text_.size())) text_ += ' ';
      text_ += '"' + Escaped(words) + '"';
    }
  }

  const std::string_view value_;
  const TextReader& reader_;
  const bool addresses_;
  std::size_t at_ = 0;
  std::size_t plain_ = 0;      // from here on nothing is in the text, but for the words before it
  std::size_t quotesEnd_ = 0;  // behind the quotes last met
  Ends wordEnds_;
  Ends addressEnds_;
  std::string_view charset_;  // of the words that are not in the text yet
  std::string bytes_;
  bool hasWords_ = false;
  std::string text_;
};

}  // namespace

std::string DecodeEncodedWords(std::string_view value, const TextReader& reader) {
  return WordDecoder(value, reader, false).Decode();
}

std::string DecodeAddresses(std::string_view value, const TextReader& reader) {
  return WordDecoder(value, reader, true).Decode();
}

}  // namespace quillon
