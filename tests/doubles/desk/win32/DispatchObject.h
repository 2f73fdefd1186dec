// What the objects of all automation faces have in common: members found by name in a table, and
// the way of a call: the log, the fault that was asked for, the check that the object is usable,
// the member.
#pragma once

#include <atomic>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "desk/win32/Arguments.h"
#include "desk/win32/CallErrors.h"
#include "desk/win32/CallGate.h"
#include "desk/win32/Values.h"

namespace desk {

// How many objects there are: the library stays for as long as there is one.
std::atomic<long>& LiveObjects();

struct MemberFacts {
  constexpr MemberFacts(std::string_view memberName, DISPID memberId,
                        std::string_view parameterNames, bool canBePut = false)
      : name(memberName), id(memberId), parameters(parameterNames), writable(canBePut) {}

  std::string_view name;
  DISPID id;
  // Names with a blank between them; those in front of a "|" cannot be left out. What is given for
  // one that ends with "Password" is not logged.
  std::string_view parameters;
  bool writable;
};

// What all objects of a face do alike.
struct FaceFacts {
  std::string_view source;  // of error records
  HRESULT storeFailure;     // the number when the store cannot be read or written
  FailWith failWith;
};

class DispatchObject : public IDispatch {
 public:
  // The object of ours that a client hands in; null for any other object or value.
  static DispatchObject* In(const VARIANT& value);

  DispatchObject(const DispatchObject&) = delete;
  DispatchObject& operator=(const DispatchObject&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                          DISPID* ids) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags,
                                   DISPPARAMS* arguments, VARIANT* result, EXCEPINFO* exception,
                                   UINT* argumentError) override;

  // Throws MemberError when the object is no more what it was made for.
  virtual void CheckUsable() const = 0;

 protected:
  DispatchObject();
  virtual ~DispatchObject();

  virtual const FaceFacts& Face() const = 0;
  // The table of the class.
  virtual std::string_view ClassName() const = 0;
  virtual std::string_view DefaultMember() const = 0;
  virtual std::size_t MemberCount() const = 0;
  virtual const MemberFacts& Member(std::size_t index) const = 0;
  // Whether the member answers before there is a session, and after the object has become useless.
  virtual bool AlwaysAnswers(std::size_t index) const = 0;
  virtual Variant Read(std::size_t index, const Arguments& arguments) = 0;
  virtual void Write(std::size_t index, const Arguments& arguments, const VARIANT& value) = 0;
  // Members that every object of the face has.
  virtual std::span<const MemberFacts> CommonMembers() const { return {}; }
  virtual Variant ReadCommon(std::size_t) const { return {}; }
  // An object whose members are made by being asked for puts the name into its table here.
  virtual void Learn(const std::string&) {}

 private:
  const MemberFacts& FactsOf(std::size_t index) const;
  std::size_t IndexOf(std::string_view name) const;
  std::size_t IndexOf(DISPID id) const;
  HRESULT Run(DISPID id, WORD flags, const DISPPARAMS& given, VARIANT* result);
  Variant Get(std::size_t index, const DISPPARAMS& given);
  Variant AllItems();
  void Put(std::size_t index, const DISPPARAMS& given);
  bool Enter(const MemberFacts& member, bool put, const Arguments& arguments) const;

  ULONG references_ = 1;
};

// A row of the table of class T. A method is a property that is only read.
template <class T>
struct MemberOf : MemberFacts {
  using Getter = Variant (*)(T&, const Arguments&);
  using Putter = void (*)(T&, const Arguments&, const VARIANT&);

  MemberOf(std::string_view memberName, DISPID memberId, std::string_view parameterNames,
           Getter getter, Putter putter = nullptr)
      : MemberFacts(memberName, memberId, parameterNames, putter != nullptr),
        get(getter),
        put(putter) {}
  // Answers always.
  MemberOf Free() && {
    free = true;
    return *this;
  }

  Getter get;
  Putter put;
  bool free = false;
};

// An object with a table: T has `kName`, `kDefault` and `Members()`. Base is a DispatchObject.
template <class T, class Base>
class TableObject : public Base {
 protected:
  using Base::Base;
  using Row = MemberOf<T>;

  std::string_view ClassName() const override { return T::kName; }
  std::string_view DefaultMember() const override { return T::kDefault; }
  std::size_t MemberCount() const override { return T::Members().size(); }
  const MemberFacts& Member(std::size_t index) const override { return T::Members()[index]; }
  bool AlwaysAnswers(std::size_t index) const override { return T::Members()[index].free; }
  Variant Read(std::size_t index, const Arguments& arguments) override {
    return T::Members()[index].get(static_cast<T&>(*this), arguments);
  }
  void Write(std::size_t index, const Arguments& arguments, const VARIANT& value) override {
    T::Members()[index].put(static_cast<T&>(*this), arguments, value);
  }
};

// A new object, and as a member's result.
template <class T, class... Given>
ComPtr<T> Make(Given&&... given) {
  return ComPtr<T>::Attach(new T(std::forward<Given>(given)...));
}
template <class T, class... Given>
Variant MakeResult(Given&&... given) {
  return FromObject(ComPtr<IDispatch>(Make<T>(std::forward<Given>(given)...).Get()));
}

}  // namespace desk
