#include "Extensions/TsHostClasses.h"

#include <initializer_list>

#include <objc/runtime.h>

static Class First(std::initializer_list<const char*> names) {
  for (const char* name : names) {
    if (Class found = objc_getClass(name)) return found;
  }
  return Nil;
}

Class TsHostWindow() { return First({"AtomNSWindow", "ElectronNSWindow"}); }

Class TsHostWindowDelegate() { return First({"AtomNSWindowDelegate", "ElectronNSWindowDelegate"}); }

Class TsHostInspectableWebContentsView() {
  return First(
      {"BRYInspectableWebContentsView", "AtomInspectableWebContentsView", "ElectronInspectableWebContentsView"});
}
