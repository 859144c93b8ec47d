#pragma once

#include_next <stdlib.h>
#ifdef __cplusplus
extern "C" {
#endif
void arc4random_buf(void* buffer, size_t length);
#ifdef __cplusplus
}
#endif
