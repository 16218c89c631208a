// The function that would be called if this program did not define one of the same name.
#pragma once

#include <dlfcn.h>

namespace interposed {

template <class Function>
Function* Real(const char* symbol) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, symbol));
}

}  // namespace interposed

#define INTERPOSED_REAL(name) static auto* const real = interposed::Real<decltype(::name)>(#name)
