#include "oauth/JsonObject.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <utility>

namespace quillon {

// What the parser calls. It goes on as long as it hears true, and keeps nothing itself.
class JsonReader {
 public:
  using json = nlohmann::json;

  explicit JsonReader(JsonObject& object) : object_(object) {}

  bool null() { return InObject(); }
  bool boolean(bool) { return InObject(); }
  bool number_integer(json::number_integer_t value) { return Keep(static_cast<double>(value)); }
  bool number_unsigned(json::number_unsigned_t value) { return Keep(static_cast<double>(value)); }
  bool number_float(json::number_float_t value, const std::string&) { return Keep(value); }
  bool string(std::string& value) { return Keep(std::move(value)); }
  bool binary(json::binary_t&) { return false; }
  bool start_object(std::size_t) { return ++depth_ <= kDeepest; }
  bool end_object() { return depth_-- > 0; }
  bool start_array(std::size_t) { return InObject() && ++depth_ <= kDeepest; }
  bool end_array() { return depth_-- > 0; }
  bool key(std::string& name) {
    if (depth_ == 1) name_ = std::move(name);
    return true;
  }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) {
    return false;
  }

 private:
  static constexpr int kDeepest = 16;
  static constexpr std::size_t kMostMembers = 100;

  bool InObject() const { return depth_ > 0; }

  template <typename Value>
  bool Keep(Value value) {
    if (depth_ == 1 && object_.members_.size() < kMostMembers) {
      object_.members_.try_emplace(name_, std::move(value));
    }
    return InObject();
  }

  JsonObject& object_;
  int depth_ = 0;
  std::string name_;
};

std::optional<JsonObject> JsonObject::Read(std::string_view text) {
  JsonObject object;
  JsonReader reader(object);
  if (!nlohmann::json::sax_parse(text, &reader)) return std::nullopt;
  return object;
}

std::string JsonObject::Text(std::string_view name) const {
  const auto found = members_.find(name);
  if (found == members_.end()) return {};
  const auto* const text = std::get_if<std::string>(&found->second);
  return text != nullptr ? *text : std::string();
}

std::optional<double> JsonObject::Number(std::string_view name) const {
  const auto found = members_.find(name);
  if (found == members_.end()) return std::nullopt;
  if (const auto* const number = std::get_if<double>(&found->second)) return *number;
  const auto& text = std::get<std::string>(found->second);
  char* end = nullptr;
  const double number = std::strtod(text.c_str(), &end);
  const bool whole = !text.empty() && end == text.c_str() + text.size();
  if (!whole || !std::isfinite(number)) return std::nullopt;
  return number;
}

}  // namespace quillon
