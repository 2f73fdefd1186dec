#include <gtest/gtest.h>
#include <objbase.h>

#include "platform/win32/AutomationVariant.h"
#include "platform/win32/Bstr.h"
#include "platform/win32/ForeignLibrary.h"
#include "platform/win32/SafeArray.h"
#include "platform/win32/Win32AutomationObject.h"

namespace quillon {
namespace {

// What libraries do that should not: each ends the call, and the next one works.
TEST(Guarded, AFaultEndsTheCallAndNotTheProcess) {
  volatile int zero = 0;
  int* volatile nowhere = nullptr;
  const auto reads = [&] { zero = *nowhere; };
  const auto divides = [&] { zero = 100 / zero; };
  const auto raises = [] { RaiseException(0xE06D7363, EXCEPTION_NONCONTINUABLE, 0, nullptr); };
  for (int round = 0; round < 3; ++round) {
    EXPECT_FALSE(Guarded(reads));
    EXPECT_FALSE(Guarded(divides));
    EXPECT_FALSE(Guarded(raises));
    int calls = 0;
    EXPECT_TRUE(Guarded([&] { ++calls; }));
    EXPECT_EQ(1, calls);
  }
}

// The inner call's fault is the inner call's, and exceptions of this program pass as ever.
TEST(Guarded, NestsAndLeavesExceptionsAlone) {
  int* volatile nowhere = nullptr;
  volatile int read = 0;
  bool inner = true;
  EXPECT_TRUE(Guarded([&] { inner = Guarded([&] { read = *nowhere; }); }));
  EXPECT_FALSE(inner);
  EXPECT_THROW(throw std::runtime_error("own"), std::runtime_error);
}

TEST(ForeignLibrary, WhatIsMissingIsFoundOutAtTheCall) {
  using Ticks = DWORD(WINAPI*)();
  ForeignLibrary none(L"no such library.dll");
  EXPECT_EQ(26UL, none.Call("GetTickCount", Ticks{}, DWORD{26}, DWORD{2}));
  ForeignLibrary kernel(L"kernel32.dll");
  EXPECT_EQ(26UL, kernel.Call("NoSuchFunction", Ticks{}, DWORD{26}, DWORD{2}));
  EXPECT_EQ(GetCurrentProcessId(),
            kernel.Call("GetCurrentProcessId", Ticks{}, DWORD{26}, DWORD{2}));
}

AutomationValue Number(std::size_t number) {
  return static_cast<std::int32_t>(number);
}

// The dictionary of the script library is an object of somebody else that every system has.
class AutomationTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    dictionary = objects.Create("Scripting.Dictionary");
  }
  void TearDown() override {
    dictionary.reset();
    CoUninitialize();
  }

  Win32AutomationObjects objects;
  AutomationObjectPtr dictionary;
};

TEST_F(AutomationTest, ValuesOfAllKindsComeBackAsTheyWere) {
  const std::vector<AutomationValue> values{
      std::monostate{},
      true,
      std::int32_t{-5},
      2.5,
      AutomationDate{46000.25},
      std::string("\xE2\x82\xAC"),
      dictionary,
      std::vector<AutomationValue>{std::int32_t{1}, std::string("two")}};
  for (std::size_t i = 0; i < values.size(); ++i) {
    dictionary->Call("Add", {Number(i), values[i]});
    const auto back = dictionary->Get("Item", {Number(i)});
    if (std::holds_alternative<AutomationObjectPtr>(values[i])) {
      EXPECT_EQ(DispatchOf(dictionary).Get(),
                DispatchOf(std::get<AutomationObjectPtr>(back)).Get());
    } else {
      EXPECT_EQ(values[i].index(), back.index()) << i;
    }
  }
  EXPECT_EQ(std::int32_t{8}, std::get<std::int32_t>(dictionary->Get("Count")));
  const auto list = dictionary->Get("Item", {Number(7)});
  EXPECT_EQ("two", std::get<std::string>(std::get<std::vector<AutomationValue>>(list)[1]));
}

// As some objects hand them over, instead of lists of variants.
TEST_F(AutomationTest, ListsOfOneTypeAreRead) {
  const auto listOf = [](VARTYPE type, auto element) {
    auto array = SafeArray::Make(type, 2);
    ArrayElements<decltype(element)>(array.Get()).Get()[1] = element;
    Variant list;
    V_ARRAY(&list.Get()) = array.Detach();
    V_VT(&list.Get()) = static_cast<VARTYPE>(VT_ARRAY | type);
    return ValueOf(list.Get());
  };
  using List = std::vector<AutomationValue>;
  const auto dates = std::get<List>(listOf(VT_DATE, DATE{46348.5}));
  ASSERT_EQ(dates.size(), 2U);
  EXPECT_EQ(std::get<AutomationDate>(dates[1]).days, 46348.5);
  const auto texts = std::get<List>(listOf(VT_BSTR, Bstr("text").Detach()));
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_EQ(std::get<std::string>(texts[0]) + std::get<std::string>(texts[1]), "text");
  const auto found = std::get<List>(listOf(VT_DISPATCH, DispatchOf(dictionary).Detach()));
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(std::get<AutomationObjectPtr>(found[0]), nullptr);
  EXPECT_EQ(DispatchOf(std::get<AutomationObjectPtr>(found[1])).Get(),
            DispatchOf(dictionary).Get());
}

TEST_F(AutomationTest, FailuresCarryTheNumberOfTheObject) {
  const auto numberOf = [&](auto&& call) {
    try {
      call();
    } catch (const AutomationError& error) {
      return error.Number();
    }
    return std::int32_t{0};
  };
  EXPECT_EQ(DISP_E_UNKNOWNNAME, numberOf([&] { dictionary->Get("NoSuchMember"); }));
  dictionary->Call("Add", {Number(1), Number(1)});
  EXPECT_NE(0, numberOf([&] { dictionary->Call("Add", {Number(1), Number(1)}); }));
  EXPECT_EQ(CO_E_CLASSSTRING, numberOf([&] { objects.Create("No.Such.Class"); }));
  dictionary->Call("RemoveAll");
  dictionary->Put("CompareMode", std::int32_t{1});
  EXPECT_EQ(std::int32_t{1}, std::get<std::int32_t>(dictionary->Get("CompareMode")));
}

}  // namespace
}  // namespace quillon
