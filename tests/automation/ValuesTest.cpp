// Values on their way through the edge, and the collections that carry them.
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "AutomationWorld.h"
#include "automation/Conversion.h"
#include "automation/ItemsObject.h"
#include "core/ServerError.h"

namespace quillon::testing {
namespace {

TEST(ConversionTest, EveryKindOfVariantHasItsValue) {
  struct Case {
    VARTYPE type;
    LONGLONG bits;
    Value expected;
  };
  const std::vector<Case> cases{
      {VT_EMPTY, 0, std::monostate{}},
      {VT_NULL, 0, NullValue{}},
      {VT_BOOL, 0xFFFF, true},
      {VT_I1, 0xFF, std::int16_t{-1}},
      {VT_UI1, 0xFF, std::int16_t{255}},
      {VT_UI2, 0xFFFF, std::int32_t{65535}},
      {VT_INT, -5, std::int32_t{-5}},
      {VT_UI4, 0x7FFFFFFF, std::int32_t{2147483647}},
      {VT_UI4, 0xFFFFFFFF, 4294967295.0},
      {VT_I8, -2147483648LL, std::int32_t{-2147483647 - 1}},
      {VT_I8, -2147483649LL, -2147483649.0},
      {VT_UI8, -1, 18446744073709551615.0},
      {VT_CY, 12500, 1.25},
  };
  for (const Case& c : cases) {
    Variant variant;
    V_I8(&variant.Get()) = c.bits;
    V_VT(&variant.Get()) = c.type;
    EXPECT_EQ(ValueFromVariant(variant.Get()), c.expected) << c.type << " " << c.bits;
  }
  // Through a reference, as typed clients pass their variables.
  short number = -7;
  EXPECT_EQ(ValueFromVariant(By(VT_I2, &number)), Value(std::int16_t{-7}));
}

TEST(ConversionTest, AnObjectStandsForItsDefaultProperty) {
  ComWorld world;
  const auto items =
      ComPtr<IItems>::Attach(new ItemsObject(world.ItemsType(), world.Lifetime(), {"text"}));
  const auto server = world.NewServer();
  // Item wants an index and Server has no default property: neither has a value of its own.
  for (IDispatch* object :
       {static_cast<IDispatch*>(items.Get()), static_cast<IDispatch*>(server.Get()),
        static_cast<IDispatch*>(nullptr)}) {
    VARIANT variant = {};
    V_DISPATCH(&variant) = object;
    V_VT(&variant) = VT_DISPATCH;
    EXPECT_THROW(ValueFromVariant(variant), ConversionError);
  }
}

// Texts that clients put come back unit by unit.
TEST(ConversionTest, AnyTextSurvivesAProperty) {
  ComWorld world;
  const auto server = world.NewServer();
  const std::vector<std::wstring> texts{L"",
                                        L"plain",
                                        std::wstring(L"a\0b\0", 4),
                                        L"gr\u00fc\u00df \u4f60 \U0001F600",
                                        std::wstring{0xD800},
                                        std::wstring{0xDC00, 0xD800, L'x'},
                                        std::wstring{0xD83D, 0xD83D, 0xDE00},
                                        std::wstring(1U << 20U, L'\u20ac')};
  for (const std::wstring& text : texts) {
    Variant variant;
    V_BSTR(&variant.Get()) = Bstr(std::wstring_view(text)).Detach();
    V_VT(&variant.Get()) = VT_BSTR;
    ASSERT_EQ(server->put_Message(variant.Get()), S_OK);
    Variant back;
    ASSERT_EQ(server->get_Message(back.Put()), S_OK);
    ASSERT_EQ(back.Type(), VT_BSTR);
    EXPECT_TRUE(ViewOf(V_BSTR(&back.Get())) == text) << "of length " << text.size();
  }
}

class ItemsTest : public ::testing::Test {
 protected:
  ComWorld world_;
  ComPtr<IItems> items_ = ComPtr<IItems>::Attach(
      new ItemsObject(world_.ItemsType(), world_.Lifetime(), {"one", "two", "three"}));
};

TEST_F(ItemsTest, ItemCountsFromOne) {
  LONG count = 0;
  EXPECT_EQ(items_->get_Count(&count), S_OK);
  EXPECT_EQ(count, 3);
  for (const auto& [index, expected] :
       {std::pair{0L, ""}, {1L, "one"}, {3L, "three"}, {4L, ""}, {-1L, ""}}) {
    Variant value;
    const HRESULT result = items_->get_Item(index, value.Put());
    EXPECT_EQ(result, *expected == 0 ? DISP_E_BADINDEX : S_OK) << index;
    EXPECT_EQ(Shown(value.Get()), expected) << index;
  }
}

TEST_F(ItemsTest, TheEnumeratorKeepsTheRulesOfIEnumVariant) {
  ComPtr<IUnknown> unknown;
  ASSERT_EQ(items_->get__NewEnum(unknown.Put()), S_OK);
  const auto all = QueryFor<IEnumVARIANT>(unknown.Get());
  items_ = {};  // the enumerator lives on

  VARIANT values[4] = {};
  ULONG fetched = 9;
  EXPECT_EQ(all->Next(2, values, &fetched), S_OK);
  EXPECT_EQ(fetched, 2U);
  ComPtr<IEnumVARIANT> copy;
  EXPECT_EQ(all->Clone(copy.Put()), S_OK);
  EXPECT_EQ(copy->Next(4, values + 2, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 1U);
  EXPECT_EQ(Shown(values[0]) + Shown(values[1]) + Shown(values[2]), "onetwothree");
  for (VARIANT& value : values) VariantClear(&value);
  EXPECT_EQ(all->Skip(1), S_OK);
  EXPECT_EQ(all->Skip(1), S_FALSE);
  EXPECT_EQ(all->Next(1, values, nullptr), S_FALSE);
  EXPECT_EQ(all->Next(2, values, nullptr), E_POINTER);
  EXPECT_EQ(all->Reset(), S_OK);
  EXPECT_EQ(all->Next(1, values, nullptr), S_OK);
  EXPECT_EQ(Shown(values[0]), "one");
  VariantClear(&values[0]);
}

}  // namespace
}  // namespace quillon::testing
