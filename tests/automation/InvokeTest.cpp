// Late-bound calls: what scripts pass, what they get back, and what they are told when it is wrong.
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "AutomationWorld.h"
#include "platform/win32/SafeArray.h"

namespace quillon::testing {
namespace {

constexpr WORD kGet = DISPATCH_PROPERTYGET;
constexpr WORD kMethod = DISPATCH_METHOD;
constexpr WORD kPut = DISPATCH_PROPERTYPUT;

class InvokeTest : public ::testing::Test {
 protected:
  Outcome Call(const wchar_t* member, WORD flags, std::vector<VARIANT> arguments = {},
               std::vector<std::wstring> names = {}) {
    return Invoke(server_.Get(), member, flags, std::move(arguments), std::move(names));
  }
  std::string Get(const wchar_t* member) { return Shown(Call(member, kGet).value.Get()); }

  ComWorld world_;
  ComPtr<IServer> server_ = world_.NewServer();
};

TEST_F(InvokeTest, WrongCallsGetTheStandardNumbers) {
  const Variant text = Text("text");
  const Variant word = Text("not a number");
  const Variant large = Number(70000);
  const Variant one = Number(1);
  const Variant missing = Error(DISP_E_PARAMNOTFOUND);
  Variant array;
  V_ARRAY(&array.Get()) = SafeArray::Make(VT_VARIANT, 2).Detach();
  V_VT(&array.Get()) = VT_ARRAY | VT_VARIANT;
  const auto t = text.Get();
  const auto w = word.Get();
  const auto l = large.Get();
  const auto n = one.Get();
  const auto m = missing.Get();

  struct Case {
    const wchar_t* member;
    WORD flags;
    std::vector<VARIANT> arguments;
    HRESULT expected;
    UINT argument = 99;  // counted from the last one
  };
  const std::vector<Case> cases{
      {L"NoSuchMember", kMethod, {}, DISP_E_UNKNOWNNAME},
      {L"AddRecipientTo", kMethod, {}, DISP_E_PARAMNOTOPTIONAL},
      {L"AddRecipientTo", kMethod, {m}, DISP_E_PARAMNOTOPTIONAL, 0},
      {L"AddRecipientTo", kMethod, {t, t}, DISP_E_BADPARAMCOUNT},
      {L"subject", kGet, {t}, DISP_E_BADPARAMCOUNT},
      {L"subject", kPut, {}, DISP_E_BADPARAMCOUNT},
      {L"AddRecipientTo", kPut, {t}, DISP_E_MEMBERNOTFOUND},
      {L"Password", kGet, {}, DISP_E_MEMBERNOTFOUND},
      {L"ServerVersion", kPut, {t}, DISP_E_MEMBERNOTFOUND},
      {L"ClearMessageItems", kMethod, {w}, DISP_E_TYPEMISMATCH, 0},
      {L"ClearMessageItems", kMethod, {l}, DISP_E_OVERFLOW, 0},
      {L"AddAlternative", kMethod, {t, array.Get(), n}, DISP_E_TYPEMISMATCH, 1},
      {L"AddAlternative", kMethod, {t, t, w}, DISP_E_TYPEMISMATCH, 0},
      {L"TimeoutConnect", kPut, {w}, DISP_E_TYPEMISMATCH, 0},
      {L"SMTPPort", kPut, {l}, DISP_E_OVERFLOW, 0},
      {L"subject", kPut, {array.Get()}, DISP_E_TYPEMISMATCH, 0},
      {L"GetMessageItems", kMethod, {n, t, n}, DISP_E_TYPEMISMATCH, 1},
  };
  for (const Case& c : cases) {
    const Outcome outcome = Call(c.member, c.flags, c.arguments);
    EXPECT_EQ(outcome.result, c.expected) << Utf8FromWide(c.member);
    EXPECT_EQ(outcome.argument, c.argument) << Utf8FromWide(c.member);
  }
  EXPECT_EQ(Get(L"TimeoutConnect"), "30000");
}

TEST_F(InvokeTest, NamesAreFoundInAnyCaseAndArgumentsByName) {
  const Variant name = Text("Colour");
  const Variant value = Text("blue");
  EXPECT_EQ(
      Call(L"ADDXHEADER", kMethod, {value.Get(), name.Get()}, {L"thevalue", L"THENAME"}).result,
      S_OK);
  ASSERT_EQ(world_.World().shared.message.xHeaders.size(), 1U);
  EXPECT_EQ(world_.World().shared.message.xHeaders[0].name, "Colour");
  EXPECT_EQ(Call(L"AddXHeader", kMethod, {name.Get(), value.Get()}, {L"theName", L"noSuch"}).result,
            DISP_E_UNKNOWNNAME);
  // The same parameter twice: by position and by name.
  EXPECT_EQ(Call(L"AddXHeader", kMethod, {name.Get(), value.Get()}, {L"theName"}).result,
            DISP_E_PARAMNOTFOUND);
}

TEST_F(InvokeTest, MethodsAndPropertyGetsAreCalledEitherWay) {
  const Variant one = Number(1);
  for (const WORD flags : {kGet, kMethod, static_cast<WORD>(kGet | kMethod)}) {
    EXPECT_EQ(Call(L"ServerType", flags).result, S_OK);
    EXPECT_EQ(Call(L"GetMessageItemString", flags, {one.Get()}).result, S_OK);
    const Outcome items = Call(L"MessageItems", flags, {one.Get()});
    ASSERT_EQ(V_VT(&items.value.Get()), VT_DISPATCH);
    const Outcome all = Invoke(V_DISPATCH(&items.value.Get()), L"_NewEnum", flags);
    EXPECT_EQ(V_VT(&all.value.Get()), VT_UNKNOWN);
  }
}

TEST_F(InvokeTest, ArgumentsAreConvertedToTheDeclaredType) {
  Variant inner = Text("variable");
  Variant outer;
  outer.Get() = By(inner);
  Variant number = Number(42);
  Variant asText = Text("2525");
  Variant yes;
  V_BOOL(&yes.Get()) = VARIANT_TRUE;
  V_VT(&yes.Get()) = VT_BOOL;

  EXPECT_EQ(Call(L"subject", kPut, {By(inner)}).result, S_OK);
  EXPECT_EQ(Get(L"subject"), "variable");
  EXPECT_EQ(Call(L"replyTo", kPut, {number.Get()}).result, S_OK);  // declared as a string
  EXPECT_EQ(Get(L"replyTo"), "42");
  EXPECT_EQ(Call(L"SMTPPort", kPut, {asText.Get()}).result, S_OK);
  EXPECT_EQ(Get(L"SMTPPort"), "2525");
  EXPECT_EQ(Call(L"Certify", kPut, {yes.Get()}).result, S_OK);
  EXPECT_EQ(Get(L"Certify"), "-1");
  EXPECT_EQ(Call(L"InternetLogging", kPut, {yes.Get()}).result, S_OK);  // declared as a short
  EXPECT_EQ(Get(L"InternetLogging"), "-1");
}

class ByReferenceTest : public InvokeTest {
 protected:
  void SetUp() override {
    for (const char* recipient : {"a@x", "b@x"}) {
      const Variant text = Text(recipient);
      Call(L"AddRecipientTo", kMethod, {text.Get()});
    }
  }
  const Variant to_ = Number(1);
};

TEST_F(ByReferenceTest, AScriptGetsAnArrayOfVariantsAndTheCount) {
  Variant array;
  Variant count;
  // Twice: the second call finds the first one's array in the variable.
  for (int round = 0; round < 2; ++round) {
    ASSERT_EQ(Call(L"GetMessageItems", kMethod, {to_.Get(), By(array), By(count)}).result, S_OK);
    ASSERT_EQ(array.Type(), VT_ARRAY | VT_VARIANT);
    const ArrayElements<VARIANT> elements(V_ARRAY(&array.Get()));
    ASSERT_EQ(elements.Get().size(), 2U);
    EXPECT_EQ(Shown(elements.Get()[1]), "b@x");
    EXPECT_EQ(count.Type(), VT_I2);
    EXPECT_EQ(V_I2(&count.Get()), 2);
  }
}

TEST_F(ByReferenceTest, ATypedClientGetsTheDeclaredTypes) {
  SAFEARRAY* array = SafeArray::Make(VT_BSTR, 5).Detach();
  short count = 0;
  LONG wide = 0;
  ASSERT_EQ(Call(L"GetMessageItems", kMethod,
                 {to_.Get(), By(VT_ARRAY | VT_BSTR, &array), By(VT_I2, &count)})
                .result,
            S_OK);
  const SafeArray owner(array);
  const ArrayElements<BSTR> elements(array);
  ASSERT_EQ(elements.Get().size(), 2U);
  EXPECT_EQ(Utf8FromBstr(elements.Get()[0]), "a@x");
  EXPECT_EQ(count, 2);
  // A variable of another width is converted to, and a script's own array filled.
  SAFEARRAY* variants = SafeArray::Make(VT_VARIANT, 0).Detach();
  Variant variable;
  variable.Get() = By(VT_ARRAY | VT_VARIANT, &variants);
  ASSERT_EQ(Call(L"GetMessageItems", kMethod, {to_.Get(), By(variable), By(VT_I4, &wide)}).result,
            S_OK);
  const SafeArray variantsOwner(variants);
  EXPECT_EQ(ArrayElements<VARIANT>(variants).Get().size(), 2U);
  EXPECT_EQ(wide, 2);
}

TEST_F(ByReferenceTest, WhatAMethodLeavesAloneStaysAsItWas) {
  const Variant number = Number(static_cast<LONG>(0x80040203));
  Variant system;
  Variant decoded = Text("77");
  Variant api = Number(88);
  Variant text;
  ASSERT_EQ(
      Call(L"DecodeError", kMethod, {number.Get(), By(system), By(decoded), By(api), By(text)})
          .result,
      S_OK);
  EXPECT_EQ(decoded.Type(), VT_BSTR);
  EXPECT_EQ(Shown(decoded.Get()) + " " + Shown(api.Get()), "77 88");
  EXPECT_EQ(Shown(system.Get()), "0");
  EXPECT_EQ(Shown(text.Get()), "No mail system was detected.");
}

TEST_F(ByReferenceTest, ALockedArrayIsAnErrorAndKept) {
  SAFEARRAY* array = SafeArray::Make(VT_BSTR, 5).Detach();
  short count = 0;
  SafeArrayLock(array);
  EXPECT_EQ(Call(L"GetMessageItems", kMethod,
                 {to_.Get(), By(VT_ARRAY | VT_BSTR, &array), By(VT_I2, &count)})
                .result,
            DISP_E_ARRAYISLOCKED);
  SafeArrayUnlock(array);
  const SafeArray owner(array);
  EXPECT_EQ(ArrayElements<BSTR>(array).Get().size(), 5U);
}

TEST_F(InvokeTest, AFailureHasItsNumberSourceAndText) {
  const Variant one = Number(1);
  const Outcome late = Call(L"ErrorDisplay", kPut, {one.Get()});
  EXPECT_EQ(late.result, DISP_E_EXCEPTION);
  EXPECT_EQ(late.code, static_cast<HRESULT>(0x80040211));
  EXPECT_EQ(late.source, "QuillonInterface.Server");
  EXPECT_EQ(late.description, "Invalid property value.");

  // Early bound, and the next call that succeeds takes the error object away.
  EXPECT_EQ(server_->put_ErrorDisplay(one.Get()), static_cast<HRESULT>(0x80040211));
  ComPtr<IErrorInfo> info;
  ASSERT_EQ(GetErrorInfo(0, info.Put()), S_OK);
  Bstr text;
  info->GetDescription(text.Put());
  EXPECT_EQ(Utf8FromBstr(text.Get()), "Invalid property value.");
  EXPECT_EQ(
      QueryFor<ISupportErrorInfo>(server_.Get())->InterfaceSupportsErrorInfo(__uuidof(IServer)),
      S_OK);
  server_->put_ErrorDisplay(one.Get());
  server_->NewMessage();
  EXPECT_EQ(GetErrorInfo(0, info.Put()), S_FALSE);
}

TEST_F(InvokeTest, ANullResultPointerIsAnErrorNotACrash) {
  EXPECT_EQ(server_->get_subject(nullptr), E_POINTER);
  EXPECT_EQ(server_->get_MessageItems(1, nullptr), E_POINTER);
  short count = 0;
  EXPECT_EQ(server_->GetMessageItems(1, nullptr, &count), E_POINTER);
}

TEST_F(InvokeTest, TheObjectOutlivesACallThatReleasesIt) {
  FakeBackEnd backEnd;
  FakeMailSystem backEndSystem(MailFamily::Internet, backEnd);
  world_.World().mailSystems.Add(backEndSystem);
  const Variant ten = Number(10);
  const Variant to = Text("a@x");
  Call(L"mailSystem", kPut, {ten.Get()});
  Call(L"AddRecipientTo", kMethod, {to.Get()});
  IServer* raw = server_.Get();
  backEnd.during = [&] { server_ = {}; };
  EXPECT_EQ(raw->Send(), S_OK);
}

}  // namespace
}  // namespace quillon::testing
