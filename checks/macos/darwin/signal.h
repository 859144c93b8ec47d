#pragma once

// Darwin's signal context in place of musl's, and Darwin's name of the signal information.
#define ucontext_t musl_ucontext_t
#define siginfo_t __siginfo
#include_next <signal.h>
#undef ucontext_t
#undef siginfo_t
typedef __siginfo siginfo_t;

#ifdef __cplusplus
#include <stdint.h>

#if defined(__arm64__)
struct arm_thread_state64 {
  uint64_t __x[29];
  uint64_t __pc;
};
struct darwin_mcontext {
  arm_thread_state64 __ss;
};
#define arm_thread_state64_get_pc(state) ((state).__pc)
#else
struct x86_thread_state64 {
  uint64_t __rip;
};
struct darwin_mcontext {
  x86_thread_state64 __ss;
};
#endif
struct ucontext_t {
  darwin_mcontext* uc_mcontext;
};
#endif
