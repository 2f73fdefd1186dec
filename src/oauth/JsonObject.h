// A JSON object from a stranger (RFC 8259), as far as providers of tokens use it: the texts and
// numbers that are its own members. Everything else is read over.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace quillon {

class JsonObject {
 public:
  // None for what is no object, or nested deeper than any answer.
  static std::optional<JsonObject> Read(std::string_view text);

  // Empty when there is no such text.
  std::string Text(std::string_view name) const;
  // Also one that is written as a text, as some providers do.
  std::optional<double> Number(std::string_view name) const;

 private:
  friend class JsonReader;
  // The first of several with one name.
  std::map<std::string, std::variant<std::string, double>, std::less<>> members_;
};

}  // namespace quillon
