#include "codec/ContentField.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include "codec/EncodedWord.h"
#include "codec/TextReader.h"
#include "core/HexDigit.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::size_t kMaximumParameters = 1000;

bool IsBlank(char c) {
  return kBlanks.find(c) != std::string_view::npos;
}

std::string_view Stripped(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Where the comments of a field end. All of them are found in one pass, so that many nested or
// unclosed ones take linear time.
class CommentEnds {
 public:
  explicit CommentEnds(std::string_view field) : field_(field) {}

  // Behind the last ")" of the comment that starts at `at`; npos when it never closes. The first
  // call is that for the first comment.
  std::size_t EndOf(std::size_t at) {
    if (ends_.empty()) FindAll(at);
    return ends_[at - first_];
  }

 private:
  void FindAll(std::size_t first) {
    first_ = first;
    ends_.assign(field_.size() - first, std::string_view::npos);
    std::vector<std::size_t> open;
    for (auto at = first; at < field_.size(); ++at) {
      if (field_[at] == '\\' && !open.empty()) {
        ++at;
      } else if (field_[at] == '(') {
        open.push_back(at);
      } else if (field_[at] == ')' && !open.empty()) {
        ends_[open.back() - first] = at + 1;
        open.pop_back();
      }
    }
  }

  std::string_view field_;
  std::size_t first_ = 0;
  std::vector<std::size_t> ends_;
};

// Reads a field in pieces up to the next ";", with quotes and comments resolved.
class PieceReader {
 public:
  explicit PieceReader(std::string_view field) : field_(field), comments_(field) {}

  bool AtEnd() const { return at_ >= field_.size(); }

  // Blanks around the value of a parameter belong to it within quotes alone.
  std::string Next() {
    std::string text;
    bool openComment = false;
    bool isParameter = false;
    std::size_t valueStart = 0;
    std::size_t quotedEnd = 0;
    while (!AtEnd() && field_[at_] != ';') {
      if (field_[at_] == '"') {
        AppendQuoted(text);
        quotedEnd = text.size();
      } else if (field_[at_] == '(' && !openComment && SkipComment(isParameter, openComment)) {
        continue;
      } else if (isParameter && text.size() == valueStart && IsBlank(field_[at_])) {
        ++at_;
      } else {
        text += field_[at_++];
        if (!isParameter && text.back() == '=') {
          isParameter = true;
          valueStart = text.size();
        }
      }
    }
    if (!AtEnd()) ++at_;
    const auto last = text.find_last_not_of(kBlanks);
    text.resize(std::max(quotedEnd, last == std::string::npos ? 0 : last + 1));
    return text;
  }

 private:
  void AppendQuoted(std::string& text) {
    for (++at_; !AtEnd() && field_[at_] != '"'; ++at_) {
      // A backslash is kept unless it escapes: senders write Windows paths without escaping them.
      const bool escapes = field_[at_] == '\\' && at_ + 1 < field_.size() &&
                           (field_[at_ + 1] == '"' || field_[at_ + 1] == '\\');
      if (escapes) ++at_;
      text += field_[at_];
    }
    if (!AtEnd()) ++at_;
  }

  // In a bare file name like "report (1).pdf" the brackets are part of the name.
  bool SkipComment(bool isParameter, bool& openComment) {
    const auto end = comments_.EndOf(at_);
    openComment = end == std::string_view::npos;
    if (openComment) return false;
    const auto next = field_.find_first_not_of(kBlanks, end);
    const bool isComment = next == std::string_view::npos || field_[next] == ';' ||
                           field_[next] == '(' || !isParameter;
    if (isComment) at_ = end;
    return isComment;
  }

  std::string_view field_;
  std::size_t at_ = 0;
  CommentEnds comments_;
};

// A parameter name taken apart: "FILENAME*1*" is section 1 of FILENAME, in extended form.
struct ParameterName {
  std::string base;
  std::size_t section = 0;
  bool hasSection = false;
  bool extended = false;
};

ParameterName ParseName(std::string_view name) {
  ParameterName parsed;
  auto rest = Stripped(name);
  if (rest.ends_with('*')) {
    parsed.extended = true;
    rest.remove_suffix(1);
  }
  const auto star = rest.find('*');
  if (star != std::string_view::npos) {
    const auto digits = rest.substr(star + 1);
    const auto* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, parsed.section);
    parsed.hasSection = error == std::errc() && stop == end;
    if (parsed.hasSection) rest = rest.substr(0, star);
  }
  parsed.base = UpperAscii(rest);
  return parsed;
}

// The sections of one parameter that have come so far.
struct Sections {
  struct Section {
    std::string value;
    bool extended = false;
  };
  std::map<std::size_t, Section> byNumber;
};

std::string JoinSections(const Sections& sections, const TextReader& reader) {
  std::string bytes;
  std::string charset;
  std::size_t expected = 0;
  for (const auto& [number, section] : sections.byNumber) {
    if (number != expected++) break;  // a gap: what follows belongs to nothing
    std::string_view value = section.value;
    if (section.extended && number == 0) {
      const auto first = value.find('\'');
      const auto second = first == std::string_view::npos ? first : value.find('\'', first + 1);
      if (second != std::string_view::npos) {
        charset = value.substr(0, first);
        value.remove_prefix(second + 1);
      }
    }
    bytes += section.extended ? DecodeHexEscapes(value, '%') : std::string(value);
  }
  return reader.Named(bytes, charset);
}

}  // namespace

const std::string& ContentField::Parameter(const std::string& upperName) const {
  static const std::string kNone;
  const auto found = parameters.find(upperName);
  return found != parameters.end() ? found->second : kNone;
}

ContentField ParseContentField(std::string_view field, const TextReader& reader) {
  ContentField content;
  PieceReader pieces(field);
  const auto first = pieces.Next();
  content.value = Stripped(first);
  std::map<std::string, Sections> extended;
  for (std::size_t count = 0; !pieces.AtEnd() && count < kMaximumParameters; ++count) {
    const auto piece = pieces.Next();
    const auto equals = piece.find('=');
    if (equals == std::string::npos) continue;
    const auto name = ParseName(std::string_view(piece).substr(0, equals));
    const auto value = std::string_view(piece).substr(equals + 1);
    if (name.extended || name.hasSection) {
      extended[name.base].byNumber.try_emplace(
          name.section, Sections::Section{std::string(value), name.extended});
    } else {
      content.parameters.try_emplace(name.base, DecodeEncodedWords(value, reader));
    }
  }
  // The extended form is the better one where a sender gives both (RFC 6266, section 4.3, says it
  // for HTTP).
  for (const auto& [name, sections] : extended) {
    if (auto text = JoinSections(sections, reader); !text.empty()) {
      content.parameters[name] = std::move(text);
    }
  }
  return content;
}

}  // namespace quillon
