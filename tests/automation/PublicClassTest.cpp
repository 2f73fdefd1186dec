// Beside Server stands a second public class, as small as one can be: what it costs is its
// interface, the portable class and the skin below, and it can do all that Server can.
#include <gtest/gtest.h>
#include <string>

#include "AutomationWorld.h"
#include "Tally_h.h"
#include "automation/ClassFactory.h"
#include "automation/Registration.h"
#include "core/ServerError.h"

namespace quillon::testing {
namespace {

class Counter {
 public:
  explicit Counter(std::int32_t start) : total_(start) {}

  Value Label() const { return label_; }
  void SetLabel(const Value& label) { label_ = ToText(label); }
  std::int32_t Add(std::int32_t amount) {
    if (amount < 0) throw ServerError(700, "Nothing is taken away.");
    if (amount > 1000) throw std::length_error("too much");
    return total_ += amount;
  }

 private:
  std::string label_;
  std::int32_t total_;
};

class TallyObject final : public PublicObject<ITally, Counter> {
 public:
  using PublicObject::PublicObject;

  HRESULT STDMETHODCALLTYPE get_Label(VARIANT* value) override {
    return Answer(value, &Counter::Label);
  }
  HRESULT STDMETHODCALLTYPE put_Label(VARIANT newValue) override {
    return Run(&Counter::SetLabel, newValue);
  }
  HRESULT STDMETHODCALLTYPE Add(LONG amount, LONG* total) override {
    return Answer(total, &Counter::Add, amount);
  }
};

constexpr PublicClass kTallyClass{__uuidof(::Tally),    __uuidof(ITally), L"ITally",
                                  L"QuillonTest.Tally", L"Tally",         L"QuillonTest.Tally"};

class PublicClassTest : public ::testing::Test {
 protected:
  ComPtr<IClassFactory> NewFactory() {
    return ComPtr<IClassFactory>::Attach(
        new ClassFactory(world_.Lifetime(), kTallyClass.errorSource, [this]() -> ITally* {
          if (broken_) throw ServerError(550, "No tally to be had.");
          return new TallyObject(type_, world_.Lifetime(), 40);
        }));
  }
  ComPtr<ITally> NewTally() {
    ComPtr<ITally> tally;
    EXPECT_EQ(NewFactory()->CreateInstance(nullptr, __uuidof(ITally), tally.PutVoid()), S_OK);
    return tally;
  }

  ComWorld world_;
  const TypeLibrary library_{ProgramPath() + L"\\2"};
  const ClassType type_{library_, kTallyClass};
  bool broken_ = false;
};

TEST_F(PublicClassTest, IsCalledLateAndEarlyBound) {
  const auto tally = NewTally();
  const auto server = world_.NewServer();
  const Variant label = Text("apples");
  const Variant two = Text("2");
  EXPECT_EQ(Invoke(tally.Get(), L"label", DISPATCH_PROPERTYPUT, {label.Get()}).result, S_OK);
  EXPECT_EQ(Shown(Invoke(tally.Get(), L"Label", DISPATCH_PROPERTYGET).value.Get()), "apples");
  EXPECT_EQ(Shown(Invoke(tally.Get(), L"Add", DISPATCH_METHOD, {two.Get()}).value.Get()), "42");
  LONG total = 0;
  EXPECT_EQ(tally->Add(8, &total), S_OK);
  EXPECT_EQ(total, 50);
  EXPECT_EQ(tally->Add(1, nullptr), E_POINTER);
  EXPECT_EQ(Invoke(tally.Get(), L"subject", DISPATCH_PROPERTYGET).result, DISP_E_UNKNOWNNAME);
}

TEST_F(PublicClassTest, ItsFailuresHaveASourceOfTheirOwn) {
  const auto tally = NewTally();
  const auto server = world_.NewServer();
  const Variant less = Number(-1);
  const Variant more = Number(1001);
  const auto failed = Invoke(tally.Get(), L"Add", DISPATCH_METHOD, {less.Get()});
  EXPECT_EQ(failed.code, static_cast<HRESULT>(0x800402BC));
  EXPECT_EQ(failed.source + "|" + failed.description, "QuillonTest.Tally|Nothing is taken away.");
  const auto broken = Invoke(tally.Get(), L"Add", DISPATCH_METHOD, {more.Get()});
  EXPECT_EQ(broken.code, E_UNEXPECTED);
  EXPECT_EQ(broken.source + "|" + broken.description, "QuillonTest.Tally|too much");
  // An error object is not left behind by the other class.
  EXPECT_EQ(Invoke(tally.Get(), L"Add", DISPATCH_METHOD).source, "");
  EXPECT_EQ(Invoke(server.Get(), L"Send", DISPATCH_METHOD).source, "QuillonInterface.Server");

  broken_ = true;
  ComPtr<IUnknown> none;
  EXPECT_EQ(NewFactory()->CreateInstance(nullptr, IID_IUnknown, none.PutVoid()),
            static_cast<HRESULT>(0x80040226));
  ComPtr<IErrorInfo> info;
  ASSERT_EQ(GetErrorInfo(0, info.Put()), S_OK);
  Bstr source;
  info->GetSource(source.Put());
  EXPECT_EQ(Utf8FromBstr(source.Get()), "QuillonTest.Tally");
}

TEST_F(PublicClassTest, TellsItsClassAndIsOneObjectBehindAllInterfaces) {
  const auto tally = NewTally();
  ComPtr<ITypeInfo> info;
  ASSERT_EQ(QueryFor<IProvideClassInfo>(tally.Get())->GetClassInfo(info.Put()), S_OK);
  TYPEATTR* attributes = nullptr;
  ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
  EXPECT_EQ(attributes->guid, kTallyClass.id);
  info->ReleaseTypeAttr(attributes);
  const auto more = QueryFor<IProvideClassInfo2>(tally.Get());
  GUID events = kTallyClass.id;
  EXPECT_EQ(more->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events), E_FAIL);
  EXPECT_EQ(events, GUID_NULL);
  const auto errors = QueryFor<ISupportErrorInfo>(tally.Get());
  EXPECT_EQ(errors->InterfaceSupportsErrorInfo(__uuidof(ITally)), S_OK);
  EXPECT_EQ(errors->InterfaceSupportsErrorInfo(__uuidof(IServer)), S_FALSE);
  const auto self = QueryFor<IUnknown>(tally.Get());
  EXPECT_EQ(QueryFor<IUnknown>(QueryFor<IDispatch>(more.Get()).Get()).Get(), self.Get());
  EXPECT_EQ(QueryFor<IUnknown>(errors.Get()).Get(), self.Get());
}

}  // namespace
}  // namespace quillon::testing
