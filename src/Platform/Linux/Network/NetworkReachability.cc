#include "Platform/NetworkReachability.h"

#include <arpa/inet.h>
#include <linux/rtnetlink.h>
#include <netdb.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <utility>

#include "Base/Lifetime.h"
#include "Base/Owned.h"
#include "Base/TextPieces.h"
#include "Base/UvHandle.h"
#include "Platform/Common/FileDescriptor.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

namespace {

constexpr std::chrono::seconds kLookUpDeadline{2};
constexpr std::uint32_t kGroups =
    RTMGRP_LINK | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR;

// ---- Routes

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

// The kernel's route to `address` as a reachability word; 0 without a route. Nothing when the kernel refuses to answer.
// Takes some microseconds.
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

// ---- Changes

// Reports changes of links, addresses and routes, from the event loop. Main thread only.
//
// A report doesn't say what has changed: the kernel drops messages when there are many, and removes routes without a
// message when their link goes down. Listeners read the state themselves.
class NetworkChanges {
 public:
  using Listener = std::function<void()>;
  // Unsubscribes when the last copy is destroyed.
  using Subscription = std::shared_ptr<void>;
  static constexpr EndStage kEnd = EndStage::Services;

  static NetworkChanges& Shared() {
    static Forever<NetworkChanges> changes;
    return *changes;
  }

  // An empty subscription when the kernel sends no messages here.
  [[nodiscard]] Subscription Listen(Listener listener) noexcept {
    if (!socket_ && !Open()) return {};
    const auto place = listeners_.insert(listeners_.end(), std::move(listener));
    return {&*place, [this, place](void*) { listeners_.erase(place); }};
  }

  // Leaves the event loop for good.
  void Close() noexcept {
    isClosed_ = true;
    poll_.reset();
    socket_ = {};
  }

 private:
  [[nodiscard]] bool Open() noexcept {
    if (isClosed_) return false;
    FileDescriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE));
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = kGroups;
    if (!socket || bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return false;
    socket_ = std::move(socket);
    poll_ = MakeUvHandle<uv_poll_t>(this, uv_poll_init, socket_.get());
    if (!poll_) return false;
    uv_poll_start(poll_.get(), UV_READABLE,
                  [](uv_poll_t* handle, int, int) { OwnerOf<NetworkChanges>(handle).Receive(); });
    return true;
  }

  void Receive() noexcept {
    std::array<char, 1> beginning;
    bool isChanged = false;
    // ENOBUFS, once, stands for dropped messages.
    while (recv(socket_.get(), beginning.data(), beginning.size(), MSG_TRUNC) >= 0 || errno == ENOBUFS) {
      isChanged = true;
    }
    if (!isChanged) return;
    for (const Listener& listener : listeners_) listener();
  }

  bool isClosed_ = false;
  FileDescriptor socket_;
  UvHandle<uv_poll_t> poll_;
  std::list<Listener> listeners_;
};

// ---- Targets

// Reserved addresses: the route to them is the route to the internet, through whatever tables and rules.
constexpr IPAddress kAnywhereV4 = {IPAddress::Family::V4, {192, 0, 2, 1}};
constexpr IPAddress kAnywhereV6 = {IPAddress::Family::V6, {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}};

std::optional<ReachabilityFlags> FlagsOfInternet() {
  const auto v4 = FlagsOfRouteTo(kAnywhereV4);
  return v4.value_or(0) != 0 ? v4 : FlagsOfRouteTo(kAnywhereV6);
}

std::optional<IPAddress> ParseAddress(const std::string& text) {
  IPAddress address;
  if (inet_pton(AF_INET, text.c_str(), address.bytes.data()) == 1) return address;
  address.family = IPAddress::Family::V6;
  if (inet_pton(AF_INET6, text.c_str(), address.bytes.data()) == 1) return address;
  return std::nullopt;
}

IPAddress AddressOf(const addrinfo& found) {
  IPAddress address;
  if (found.ai_family == AF_INET) {
    const auto* v4 = reinterpret_cast<const sockaddr_in*>(found.ai_addr);
    std::copy_n(reinterpret_cast<const std::uint8_t*>(&v4->sin_addr), sizeof v4->sin_addr, address.bytes.begin());
  } else {
    const auto* v6 = reinterpret_cast<const sockaddr_in6*>(found.ai_addr);
    address.family = IPAddress::Family::V6;
    std::copy_n(v6->sin6_addr.s6_addr, address.bytes.size(), address.bytes.begin());
  }
  return address;
}

// The flags of the first address with a route.
std::optional<ReachabilityFlags> FlagsOfHost(const std::string& name) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(name.c_str(), nullptr, &hints, &found) != 0) return 0;
  const Owned<addrinfo, freeaddrinfo> owner(found);
  std::optional<ReachabilityFlags> flags;
  for (; found != nullptr && flags.value_or(0) == 0; found = found->ai_next) {
    if (found->ai_family == AF_INET || found->ai_family == AF_INET6) flags = FlagsOfRouteTo(AddressOf(*found));
  }
  return flags;
}

// The state that a watch and the tasks on its queue share. Only the two atomics are used outside the queue.
struct Watching {
  std::shared_ptr<SerialQueue> queue;
  std::function<std::optional<ReachabilityFlags>()> read;
  NetworkReachability::Changed changed;
  std::optional<ReachabilityFlags> known;
  std::atomic<bool> isOver = false;
  std::atomic<bool> isPending = false;

  // On the queue.
  void Check() {
    isPending = false;
    const auto now = read();
    if (isOver || now == known) return;
    known = now;
    changed(now.value_or(0));
  }
};

// A target whose flags can be read by a function that outlives it.
class Target final : public NetworkReachability {
 public:
  enum class Speed { Quick, Slow };

  Target(Speed speed, std::function<std::optional<ReachabilityFlags>()> read) : speed_(speed), read_(std::move(read)) {}
  ~Target() override { Unwatch(); }

  [[nodiscard]] std::optional<ReachabilityFlags> Flags() const noexcept override {
    if (speed_ == Speed::Quick || !MainQueue::IsMainThread()) return read_();
    return WithDeadline(lookUps_, kLookUpDeadline, read_).value_or(std::nullopt);
  }

  [[nodiscard]] bool Watch(std::shared_ptr<SerialQueue> queue, Changed changed) noexcept override {
    Unwatch();
    auto watching = std::make_shared<Watching>();
    watching->queue = std::move(queue);
    watching->read = read_;
    watching->changed = std::move(changed);
    subscription_ = NetworkChanges::Shared().Listen([watching] {
      if (!watching->isPending.exchange(true)) watching->queue->Post([watching] { watching->Check(); });
    });
    if (!subscription_) return false;
    if (speed_ == Speed::Quick) {
      watching->known = read_();
    } else {
      watching->queue->Post([watching] { watching->known = watching->read(); });
    }
    watching_ = std::move(watching);
    return true;
  }

  void Unwatch() noexcept override {
    if (watching_) watching_->isOver = true;
    watching_.reset();
    subscription_ = {};
  }

 private:
  const Speed speed_;
  const std::function<std::optional<ReachabilityFlags>()> read_;
  mutable SerialQueue lookUps_;
  NetworkChanges::Subscription subscription_;
  std::shared_ptr<Watching> watching_;
};

}  // namespace

std::unique_ptr<NetworkReachability> NetworkReachability::WithName(const std::string& host) noexcept {
  if (host.empty() || HasNul(host)) return nullptr;
  if (const auto address = ParseAddress(host)) return WithAddress(*address);
  return std::make_unique<Target>(Target::Speed::Slow, [host] { return FlagsOfHost(host); });
}

std::unique_ptr<NetworkReachability> NetworkReachability::WithAddress(const IPAddress& address) noexcept {
  const bool isInternet =
      std::all_of(address.bytes.begin(), address.bytes.end(), [](std::uint8_t byte) { return byte == 0; });
  if (isInternet) return std::make_unique<Target>(Target::Speed::Quick, FlagsOfInternet);
  return std::make_unique<Target>(Target::Speed::Quick, [address] { return FlagsOfRouteTo(address); });
}

}  // namespace tessaro::platform
