#include <gtest/gtest.h>

#include "codec/WebForm.h"
#include "platform/Platform.h"
#include "ports/CodePage.h"

namespace quillon {
namespace {

TEST(WebForm, FieldsAreDecoded) {
  const struct {
    const char* form;
    const char* name;
    const char* value;  // null: no such field
  } kCases[] = {
      {"name=John+Smith&city=New%20York", "NAME", "John Smith"},
      {"name=John+Smith&city=New%20York", "CITY", "New York"},
      {"v=a%2Bb", "V", "a b"},  // an escaped plus sign becomes a blank too, as it always did
      {"v=%00x", "V", "x"},
      {"v=%zzx%4gy", "V", "xy"},
      {"v=+%20a+", "V", "a"},
      {"v=abc%4", "V", "abc"},
      {"v=caf%E9%80", "V", "caf\xC3\xA9\xE2\x82\xAC"},
      {"v=caf%e9", "V", "caf\xC3\xA9"},
      {"v=", "V", ""},
      {"v=New%20York\r\n", "V", "New York"},
      {"\r\na=b&\r\nv=x+\r\n\r\n", "V", "x"},
      {"v=x%0D%0A", "V", "x\r\n"},
      {"=x&v=1&novalue&&v=2", "V", "1"},
      {"=x&v=1&novalue&&v=2", "NOVALUE", nullptr},
      {" v =a=b", "V", "a=b"},
      {"", "V", nullptr},
  };
  const auto codePage = MakeAnsiCodePage();
  for (const auto& test : kCases) {
    WebFormFields fields;
    ParseWebForm(test.form, *codePage, fields);
    const auto found = fields.find(test.name);
    ASSERT_EQ(test.value != nullptr, found != fields.end()) << test.form;
    if (test.value != nullptr) {
      EXPECT_EQ(test.value, found->second) << test.form;
    }
  }
}

TEST(WebForm, DecodingConsumesItsArgument) {
  const auto codePage = MakeAnsiCodePage();
  std::string_view text = "a%41b%42rest";
  EXPECT_EQ("aAbBrest", DecodeFormValue(text, *codePage));
  EXPECT_EQ("rest", text);
}

}  // namespace
}  // namespace quillon
