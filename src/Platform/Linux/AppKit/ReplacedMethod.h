#pragma once

#include <string>

#include "Base/TsReplaceMethod.h"

namespace tessaro::platform {

// Replaces a method of GNUstep's by a function. Calling the object runs GNUstep's method, which the class keeps under
// the name "ts_gnustep_…".
template <typename Function>
class ReplacedMethod {
 public:
  void With(Class patched, const char* selector, Function replacement) {
    const std::string alias = std::string("ts_gnustep_") + selector;
    previous_ = reinterpret_cast<Function>(TsReplaceMethod(
        patched, sel_registerName(selector), sel_registerName(alias.c_str()), reinterpret_cast<IMP>(replacement)));
  }

  template <typename... Arguments>
  auto operator()(Arguments... arguments) const {
    return previous_(arguments...);
  }

 private:
  Function previous_ = nullptr;
};

}  // namespace tessaro::platform
