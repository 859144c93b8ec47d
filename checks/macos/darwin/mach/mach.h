#pragma once

#ifdef __cplusplus
extern "C" {
#endif
typedef unsigned int mach_port_t;
typedef mach_port_t semaphore_t;
typedef mach_port_t thread_t;
mach_port_t mach_thread_self(void);
#ifdef __cplusplus
}
#endif
