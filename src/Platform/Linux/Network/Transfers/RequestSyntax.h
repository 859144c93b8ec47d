#pragma once

#include <string>
#include <string_view>

// Which requests can be written, and how.
namespace tessaro::platform {

// Whether the text is a method or a header's name. Any other character could begin a new line of the request.
[[nodiscard]] bool IsToken(std::string_view text);

[[nodiscard]] bool IsHeaderValue(std::string_view text);

// Whether the header says where a message ends. A wrong one would make the server read the next request on the
// connection as a part of this one.
[[nodiscard]] bool IsFramingHeader(std::string_view name);

// Whether a request with this method says that it has a body, if only an empty one: without its length some servers
// wait for it, and some refuse.
[[nodiscard]] bool AnnouncesBody(std::string_view method);

// Whether a response of this status redirects to its location by itself.
[[nodiscard]] bool IsRedirect(long statusCode);

// The URL with the bytes beyond ASCII percent-encoded, except in the host's name, which has an encoding of its own.
[[nodiscard]] std::string EncodedURL(const std::string& url);

}  // namespace tessaro::platform
