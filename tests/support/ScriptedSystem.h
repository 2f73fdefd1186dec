// A system whose logins go as a test says, step by step.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ports/SystemLogin.h"

namespace quillon::testing {

class ScriptedSystem final : public SystemLogin {
 public:
  using Steps = std::vector<SystemContext::Step>;

  explicit ScriptedSystem(Steps said = {}) : steps(std::move(said)) {}

  bool Knows(SystemPackage package) const override {
    return package == SystemPackage::kNtlm ? knowsNtlm : knowsNegotiate;
  }
  std::unique_ptr<SystemContext> Begin(SystemPackage package, const std::string& target,
                                       const SystemAccount& account,
                                       const std::string& binding) const override {
    begun = package == SystemPackage::kNtlm ? "ntlm " : "negotiate ";
    begun += target + ' ' + account.loginName + ' ' + account.password + ' ' + binding;
    return std::make_unique<Context>(steps);
  }

  bool knowsNtlm = true;
  bool knowsNegotiate = true;
  Steps steps;                // a challenge is put behind the response of its step
  mutable std::string begun;  // everything that it was begun with, with blanks between

 private:
  class Context final : public SystemContext {
   public:
    explicit Context(std::vector<Step> steps) : steps_(std::move(steps)) {}

    Step Advance(std::string_view challenge) override {
      if (next_ == steps_.size()) return {{}, false, "The system was asked too often."};
      auto step = steps_[next_++];
      step.response += challenge;
      return step;
    }
    std::optional<std::string> Wrap(std::string_view message) override {
      return "signed " + std::string(message);
    }
    std::optional<std::string> Unwrap(std::string_view message) override {
      if (!message.starts_with("signed ")) return std::nullopt;
      return std::string(message.substr(7));
    }

   private:
    std::vector<Step> steps_;
    std::size_t next_ = 0;
  };
};

}  // namespace quillon::testing
