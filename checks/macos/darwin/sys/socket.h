#pragma once

#include_next <sys/socket.h>
#undef SOCK_CLOEXEC
#undef SOCK_NONBLOCK
#undef MSG_NOSIGNAL
