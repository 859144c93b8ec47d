#pragma once

#include <objc/objc.h>
#include <stdint.h>

typedef struct dispatch_object_s* dispatch_object_t;
typedef struct dispatch_queue_s* dispatch_queue_t;
typedef struct dispatch_semaphore_s* dispatch_semaphore_t;
typedef struct dispatch_source_s* dispatch_source_t;
using dispatch_time_t = uint64_t;
using dispatch_function_t = void (*)(void*);
using dispatch_block_t = void (^)(void);
using dispatch_qos_class_t = unsigned int;

#define DISPATCH_TIME_NOW (0ull)
#define DISPATCH_TIME_FOREVER (~0ull)
#define DISPATCH_QUEUE_SERIAL nullptr
#define NSEC_PER_SEC 1000000000ull
#define NSEC_PER_MSEC 1000000ull
#define QOS_CLASS_UTILITY 0x11

extern "C" {
extern struct dispatch_queue_s _dispatch_main_q;
void dispatch_async(dispatch_queue_t queue, dispatch_block_t block);
void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work);
void dispatch_sync(dispatch_queue_t queue, dispatch_block_t block);
void dispatch_after(dispatch_time_t when, dispatch_queue_t queue, dispatch_block_t block);
void dispatch_after_f(dispatch_time_t when, dispatch_queue_t queue, void* context, dispatch_function_t work);
dispatch_time_t dispatch_time(dispatch_time_t when, int64_t delta);
dispatch_queue_t dispatch_queue_create(const char* label, void* attributes);
dispatch_queue_t dispatch_get_global_queue(intptr_t identifier, uintptr_t flags);
dispatch_semaphore_t dispatch_semaphore_create(intptr_t value);
intptr_t dispatch_semaphore_wait(dispatch_semaphore_t semaphore, dispatch_time_t timeout);
intptr_t dispatch_semaphore_signal(dispatch_semaphore_t semaphore);
void dispatch_retain(void* object);
void dispatch_release(void* object);
}
inline dispatch_queue_t dispatch_get_main_queue(void) { return &_dispatch_main_q; }
