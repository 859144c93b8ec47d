#pragma once

#include <objc/runtime.h>

struct objc_super {
  id receiver;
  Class super_class;
};

extern "C" {
void objc_msgSend(void);
void objc_msgSendSuper(void);
}
