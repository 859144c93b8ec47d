#include "Platform/Linux/Network/Routes.h"

#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "Platform/Common/FileDescriptor.h"

namespace tessaro::platform {

namespace {

constexpr std::size_t kAnswerSize = 8192;

struct Question {
  nlmsghdr header{};
  rtmsg route{};
  rtattr attribute{};
  std::array<std::uint8_t, 16> address{};
};

Question RouteTo(const IPAddress& address) {
  const bool isV4 = address.family == IPAddress::Family::V4;
  const unsigned char length = isV4 ? 4 : 16;
  Question question;
  question.header.nlmsg_type = RTM_GETROUTE;
  question.header.nlmsg_flags = NLM_F_REQUEST;
  question.header.nlmsg_len = static_cast<std::uint32_t>(NLMSG_LENGTH(sizeof(rtmsg)) + RTA_LENGTH(length));
  question.route.rtm_family = isV4 ? AF_INET : AF_INET6;
  question.route.rtm_dst_len = static_cast<unsigned char>(length * 8);
  // The table's entry, whose flags also show an unplugged cable.
  question.route.rtm_flags = RTM_F_FIB_MATCH;
  question.attribute.rta_type = RTA_DST;
  question.attribute.rta_len = static_cast<unsigned short>(RTA_LENGTH(length));
  question.address = address.bytes;
  return question;
}

static_assert(offsetof(Question, route) == NLMSG_HDRLEN && offsetof(Question, attribute) == NLMSG_LENGTH(sizeof(rtmsg)),
              "the parts of a message follow each other without gaps");

bool HasGateway(const nlmsghdr* header) {
  const auto* route = static_cast<const rtmsg*>(NLMSG_DATA(header));
  auto length = static_cast<int>(RTM_PAYLOAD(header));
  for (const rtattr* attribute = RTM_RTA(route); RTA_OK(attribute, length); attribute = RTA_NEXT(attribute, length)) {
    if (attribute->rta_type == RTA_GATEWAY || attribute->rta_type == RTA_VIA || attribute->rta_type == RTA_MULTIPATH) {
      return true;
    }
  }
  return false;
}

ReachabilityFlags FlagsOf(const nlmsghdr* header) {
  const auto* route = static_cast<const rtmsg*>(NLMSG_DATA(header));
  if ((route->rtm_flags & (RTNH_F_DEAD | RTNH_F_LINKDOWN)) != 0) return 0;
  switch (route->rtm_type) {
    case RTN_LOCAL:
      return kReachable | kIsLocalAddress | kIsDirect;
    case RTN_UNICAST:
      return HasGateway(header) ? kReachable : kReachable | kIsDirect;
    case RTN_BROADCAST:
    case RTN_ANYCAST:
    case RTN_MULTICAST:
      return kReachable | kIsDirect;
    default:
      return 0;
  }
}

}  // namespace

std::optional<ReachabilityFlags> FlagsOfRouteTo(const IPAddress& address) noexcept {
  const FileDescriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
  if (!socket) return std::nullopt;
  const Question question = RouteTo(address);
  if (send(socket.get(), &question, question.header.nlmsg_len, 0) < 0) return std::nullopt;

  alignas(nlmsghdr) std::array<char, kAnswerSize> answer{};
  const ssize_t received = recv(socket.get(), answer.data(), answer.size(), 0);
  const auto* header = reinterpret_cast<const nlmsghdr*>(answer.data());
  if (received < 0 || !NLMSG_OK(header, static_cast<std::size_t>(received))) return std::nullopt;
  if (header->nlmsg_type == RTM_NEWROUTE) return FlagsOf(header);
  if (header->nlmsg_type != NLMSG_ERROR) return std::nullopt;
  switch (-static_cast<const nlmsgerr*>(NLMSG_DATA(header))->error) {
    case ENETUNREACH:
    case EHOSTUNREACH:
    case EACCES:
    case EINVAL:
    case EAFNOSUPPORT:
    case EOPNOTSUPP:
      return 0;
    default:
      return std::nullopt;
  }
}

}  // namespace tessaro::platform
