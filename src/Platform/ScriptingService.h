#pragma once

#include <functional>
#include <optional>
#include <string>

namespace tessaro::platform {

// Composes the message of a mailto link, UTF-8. Gives the reason when the link is refused.
using LinkHandler = std::function<std::optional<std::string>(const std::string& link)>;

// Lets other applications script this one: the elements and properties of the application object and of its outgoing
// messages are reached by Cocoa's key-value coding. Links that the system hands to the application go to `openLink`.
//
// Main thread only, for the life of the process. What other applications ask for is done there too, on a turn of the
// main loop. Where there is no way to be asked, nobody asks.
void OfferScripting(LinkHandler openLink);

// The name under which other applications find this one; empty while they can't.
[[nodiscard]] std::string ScriptingName();

}  // namespace tessaro::platform
