// The class objects of the process, which COM asks for new objects.
#pragma once

#include <windows.h>
#include <cstddef>
#include <optional>
#include <vector>

#include "automation/ClassFactory.h"
#include "automation/PublicClass.h"

namespace quillon {

class ClassObjects {
 public:
  enum class Clients { All, One };

  // One: whoever gets the first object stays alone in this process. COM starts another one for who
  // comes next.
  explicit ClassObjects(Clients clients) : clients_(clients) {}
  ClassObjects(const ClassObjects&) = delete;
  ClassObjects& operator=(const ClassObjects&) = delete;
  ~ClassObjects() { Revoke(); }

  // Clients may come in from now on, so nothing that they need may be missing. Throws HresultError.
  void Add(const PublicClass& described, ProcessLifetime& lifetime, ClassFactory::Maker make);

  // Nobody is told of them any more. They still serve those who have been, for as long as the
  // apartment is there.
  void Revoke() noexcept;

 private:
  ClassFactory::Maker ForOneClient(ClassFactory::Maker make);

  const Clients clients_;
  std::vector<DWORD> cookies_;
  std::optional<std::size_t> taken_;  // the class whose client is the only one
};

}  // namespace quillon
