// The class objects of the process, which COM asks for new objects.
#pragma once

#include <windows.h>
#include <vector>

#include "automation/ClassFactory.h"
#include "automation/PublicClass.h"

namespace quillon {

class ClassObjects {
 public:
  ClassObjects() = default;
  ClassObjects(const ClassObjects&) = delete;
  ClassObjects& operator=(const ClassObjects&) = delete;
  ~ClassObjects() { Revoke(); }

  // Clients may come in from now on, so nothing that they need may be missing. Throws HresultError.
  void Add(const PublicClass& described, ProcessLifetime& lifetime, ClassFactory::Maker make);

  // Nobody is told of them any more. They still serve those who have been, for as long as the
  // apartment is there.
  void Revoke() noexcept;

 private:
  std::vector<DWORD> cookies_;
};

}  // namespace quillon
