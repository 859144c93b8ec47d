#pragma once

#include_next <pthread.h>
#include <stdint.h>
#ifdef __cplusplus
extern "C" {
#endif
int pthread_main_np(void);
// The thread is a pointer on Darwin.
int pthread_threadid_np(decltype(nullptr) thread, uint64_t* identifier);
#ifdef __cplusplus
}
#endif
