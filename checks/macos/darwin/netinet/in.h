#pragma once

// Darwin's addresses begin with their length.
#define sockaddr_in musl_sockaddr_in
#define sockaddr_in6 musl_sockaddr_in6
#include_next <netinet/in.h>
#undef sockaddr_in
#undef sockaddr_in6

struct sockaddr_in {
  unsigned char sin_len;
  unsigned char sin_family;
  in_port_t sin_port;
  struct in_addr sin_addr;
  char sin_zero[8];
};
struct sockaddr_in6 {
  unsigned char sin6_len;
  unsigned char sin6_family;
  in_port_t sin6_port;
  uint32_t sin6_flowinfo;
  struct in6_addr sin6_addr;
  uint32_t sin6_scope_id;
};
