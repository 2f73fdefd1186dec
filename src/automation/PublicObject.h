// What an object of a public class does whatever its members are: `Core` is the class of the layer
// below that knows the work, `Interface` the dual interface that clients call. What is left to the
// skin that derives from it is one line per member. `Others` are interfaces beside that one.
#pragma once

#include <utility>

#include "automation/ClassType.h"
#include "automation/ComObject.h"
#include "automation/MemberValues.h"

namespace quillon {

template <class Interface, class Core, class... Others>
class PublicObject : public DispatchObject<Interface, IProvideClassInfo2, Others...> {
 public:
  // `arguments` make the core.
  template <class... Arguments>
  PublicObject(const ClassType& type, ProcessLifetime& lifetime, Arguments&&... arguments)
      : DispatchObject<Interface, IProvideClassInfo2, Others...>(type.dual, lifetime),
        classInfo_(type.info),
        core_(std::forward<Arguments>(arguments)...) {}

  HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** info) override {
    return this->Call([&] { Output(info) = ComPtr<ITypeInfo>(classInfo_).Detach(); });
  }
  // There are no events, and so no interface for them.
  HRESULT STDMETHODCALLTYPE GetGUID(DWORD kind, GUID* id) override {
    return this->Call([&] {
      Output(id) = GUID_NULL;
      throw HresultError(kind == GUIDKIND_DEFAULT_SOURCE_DISP_IID ? E_FAIL : E_INVALIDARG);
    });
  }

 protected:
  // Calls a member of the core with the client's arguments; Answer hands its result back.
  template <class Member, class... Arguments>
  HRESULT Run(Member member, const Arguments&... arguments) {
    return this->Call([&] { (core_.*member)(Taken(arguments)...); });
  }
  template <class Result, class Member, class... Arguments>
  HRESULT Answer(Result* value, Member member, const Arguments&... arguments) {
    return this->Call([&] {
      Output(value) = {};
      Give(value, (core_.*member)(Taken(arguments)...));
    });
  }

  Core& Below() noexcept { return core_; }

 private:
  const ComPtr<ITypeInfo> classInfo_;
  Core core_;
};

}  // namespace quillon
