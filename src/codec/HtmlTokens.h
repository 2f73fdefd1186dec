// The tags and texts that HTML is made of, read the way browsers read what is malformed. Linear in
// the length of the HTML.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillon {

struct HtmlAttribute {
  std::string name;   // in upper case
  std::string value;  // its character references decoded
};

class HtmlTokens {
 public:
  // Of what is not for the eye: scripts, styles, the title.
  enum class Kind { Text, Tag, Hidden, End };

  // The HTML must live as long as this.
  explicit HtmlTokens(std::string_view html) : rest_(html) {}

  Kind Next();

  // Of a text, or of what is hidden: as it stands.
  std::string_view Text() const noexcept { return text_; }

  // Of a tag, in upper case; of what is hidden, that of its tag.
  const std::string& Name() const noexcept { return name_; }
  bool Closes() const noexcept { return closes_; }
  std::vector<HtmlAttribute> Attributes() const;
  std::string Attribute(std::string_view upperName) const;

 private:
  bool SkipRemark();
  bool TakeTag();
  Kind TakeHidden();

  std::string_view rest_;
  std::string_view text_;
  std::string_view attributes_;
  std::string name_;
  bool closes_ = false;
  bool hides_ = false;      // what follows the tag is hidden
  bool isLiteral_ = false;  // a tag has no end: all that is left is text
  bool hasEndlessRemark_ = false;
};

}  // namespace quillon
